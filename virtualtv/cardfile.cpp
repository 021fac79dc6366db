// SPDX-License-Identifier: Apache-2.0
// Card tables. One table of keys serves reading and writing, so what is written is read back alike.
#include "cardfile.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <tuple>

#include "jdomparser.h"
#include "jvalue.h"

namespace virtualtv
{
namespace
{

// What ALSA has room for, ends of texts not counted.
constexpr std::size_t kMaxCardName = 31;
constexpr std::size_t kMaxElementName = 43;
constexpr std::size_t kMaxItemName = 63;

constexpr std::uintmax_t kMaxFileBytes = 16 << 20; // some 50,000 elements

/// What is wrong with a card table.
class BadTable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// --- Values of JSON, checked

std::int64_t wholeNumber(const JValue& value, std::int64_t minimum, std::int64_t maximum)
{
    std::int64_t number = 0;
    double exact = 0;
    const bool whole =
        value.asNumber(number) && value.asNumber(exact) && static_cast<double>(number) == exact;
    if (!whole || number < minimum || number > maximum)
        throw BadTable("must be a whole number from " + std::to_string(minimum) + " to " +
                       std::to_string(maximum));
    return number;
}

std::string text(const JValue& value, std::size_t minBytes, std::size_t maxBytes)
{
    std::string result;
    if (!value.asString(result) || result.size() < minBytes || result.size() > maxBytes ||
        result.find('\0') != std::string::npos)
        throw BadTable("must be a string of " + std::to_string(minBytes) + " to " +
                       std::to_string(maxBytes) + " bytes");
    return result;
}

/// A word of a table, as its row number.
template <typename Row, std::size_t Size>
std::size_t word(const JValue& value, const Row (&rows)[Size])
{
    std::string given;
    const bool isText = value.asString(given);
    std::string choices;
    for (std::size_t i = 0; i < Size; ++i) {
        if (isText && given == rows[i].name)
            return i;
        choices += (i == 0 ? "" : ", ") + std::string{rows[i].name};
    }
    throw BadTable("must be one of " + choices);
}

template <typename Elements>
JValue arrayOf(const Elements& elements)
{
    JValue array = JValue::array();
    for (const auto& element : elements)
        array.append(element);
    return array;
}

// --- Words

// In the order of ElementInterface.
constexpr struct {
    const char* name;
} kInterfaces[] = {{"card"}, {"hwdep"}, {"mixer"}, {"pcm"}, {"rawmidi"}, {"timer"}, {"sequencer"}};

// In the order of ElementType.
// clang-format off
constexpr struct {
    const char* name;
    int maxCount; // what ALSA has room for
    bool ranged;  // the element says its least and greatest value
    int maximum;  // where it does not; that of an enumerated one comes with its items
} kTypes[] = {
    {"boolean",    128,        false, 1},
    {"integer",    128,        true,  0},
    {"integer64",  64,         true,  0},
    {"enumerated", 128,        false, 0},
    {"bytes",      kMaxValues, false, UCHAR_MAX},
};

constexpr struct {
    char letter;
    ElementAccess access;
} kAccesses[] = {
    {'r', kReadable},
    {'w', kWritable},
    {'v', kVolatile},
    {'i', kInactive},
};
// clang-format on

const auto& typeRow(const Element& element)
{
    return kTypes[static_cast<std::size_t>(element.type)];
}

unsigned accessOf(const JValue& value)
{
    std::string letters;
    bool good = value.asString(letters);
    unsigned access = 0;
    for (const char letter : letters) {
        const auto* row = std::find_if(std::begin(kAccesses), std::end(kAccesses),
                                       [letter](const auto& one) { return one.letter == letter; });
        good = good && row != std::end(kAccesses) && (access & row->access) == 0;
        if (good)
            access |= row->access;
    }
    if (!good)
        throw BadTable("must be a string of the letters r, w, v (volatile) and i (inactive)");
    return access;
}

std::string lettersOf(unsigned access)
{
    std::string letters;
    for (const auto& row : kAccesses)
        if ((access & row.access) != 0)
            letters += row.letter;
    return letters;
}

// --- Keys of an element

void setType(Element& element, const JValue& value)
{
    element.type = ElementType(word(value, kTypes));
    element.maximum = typeRow(element).maximum;
}

/// A bound of the range: any number for an integer, nothing but what it is anyway for the others.
std::int64_t bound(const Element& element, const JValue& value, std::int64_t natural)
{
    return typeRow(element).ranged ? wholeNumber(value, INT64_MIN, INT64_MAX)
                                   : wholeNumber(value, natural, natural);
}

std::string itemName(const JValue& value)
{
    try {
        return text(value, 0, kMaxItemName);
    } catch (const BadTable& fault) {
        throw BadTable("are names, and each " + std::string{fault.what()});
    }
}

void setItems(Element& element, const JValue& value)
{
    if (element.type != ElementType::Enumerated)
        throw BadTable("is for enumerated elements only");
    if (!value.isArray() || value.size() == 0)
        throw BadTable("must be an array of strings");
    for (const JValue& item : value.elements())
        element.items.push_back(itemName(item));
    element.maximum = static_cast<std::int64_t>(element.items.size()) - 1;
}

std::vector<std::int64_t> valuesOf(const Element& element, const JValue& value)
{
    const auto count = static_cast<std::size_t>(element.count);
    if (!value.isArray() || value.size() != count)
        throw BadTable("must be an array of " + std::to_string(count) +
                       (count == 1 ? " number" : " numbers"));
    std::vector<std::int64_t> values;
    for (const JValue& number : value.elements()) {
        const bool flag = number.isBool() && element.type == ElementType::Boolean;
        values.push_back(flag ? number.asBool()
                              : wholeNumber(number, element.minimum, element.maximum));
    }
    return values;
}

unsigned int index(const JValue& value)
{
    return static_cast<unsigned int>(wholeNumber(value, 0, INT_MAX));
}

/// 0 is what is meant where nothing is said.
JValue unlessZero(unsigned int number)
{
    return number != 0 ? JValue{number} : JValue::invalid();
}

JValue ofIntegers(const Element& element, std::int64_t number)
{
    return typeRow(element).ranged ? JValue{number} : JValue::invalid();
}

struct Key {
    const char* name;
    bool (*needed)(const Element& element);
    void (*take)(Element& element, const JValue& value);
    JValue (*give)(const Element& element); // invalid: left out
};

bool always(const Element&)
{
    return true;
}

bool never(const Element&)
{
    return false;
}

bool ifRanged(const Element& element)
{
    return typeRow(element).ranged;
}

bool ifEnumerated(const Element& element)
{
    return element.type == ElementType::Enumerated;
}

// Read in this order: each key may rely on those before it.
// clang-format off
constexpr Key kKeys[] = {
    {"name", always,
     [](Element& element, const JValue& value) { element.name = text(value, 1, kMaxElementName); },
     [](const Element& element) { return JValue{element.name}; }},
    {"iface", never,
     [](Element& element, const JValue& value) { element.interface = ElementInterface(word(value, kInterfaces)); },
     [](const Element& element) { return JValue{kInterfaces[static_cast<std::size_t>(element.interface)].name}; }},
    {"index", never,
     [](Element& element, const JValue& value) { element.index = index(value); },
     [](const Element& element) { return JValue{element.index}; }},
    {"device", never,
     [](Element& element, const JValue& value) { element.device = index(value); },
     [](const Element& element) { return unlessZero(element.device); }},
    {"subdevice", never,
     [](Element& element, const JValue& value) { element.subdevice = index(value); },
     [](const Element& element) { return unlessZero(element.subdevice); }},
    {"type", always, setType,
     [](const Element& element) { return JValue{typeRow(element).name}; }},
    {"count", always,
     [](Element& element, const JValue& value) { element.count = static_cast<int>(wholeNumber(value, 1, typeRow(element).maxCount)); },
     [](const Element& element) { return JValue{element.count}; }},
    {"items", ifEnumerated, setItems,
     [](const Element& element) { return ifEnumerated(element) ? arrayOf(element.items) : JValue::invalid(); }},
    {"min", ifRanged,
     [](Element& element, const JValue& value) { element.minimum = bound(element, value, element.minimum); },
     [](const Element& element) { return ofIntegers(element, element.minimum); }},
    {"max", ifRanged,
     [](Element& element, const JValue& value) { element.maximum = bound(element, value, element.maximum); },
     [](const Element& element) { return ofIntegers(element, element.maximum); }},
    {"step", never,
     [](Element& element, const JValue& value) { element.step = wholeNumber(value, 0, INT64_MAX); },
     [](const Element& element) { return ofIntegers(element, element.step); }},
    {"access", never,
     [](Element& element, const JValue& value) { element.access = accessOf(value); },
     [](const Element& element) { return JValue{lettersOf(element.access)}; }},
    {"values", never,
     [](Element& element, const JValue& value) { element.values = valuesOf(element, value); },
     [](const Element& element) { return element.values.empty() ? JValue::invalid() : arrayOf(element.values); }},
};
// clang-format on

template <std::size_t Size>
void refuseOtherKeys(const JValue& object, const char* const (&known)[Size])
{
    for (const auto& [key, value] : object.members())
        if (std::find(std::begin(known), std::end(known), key) == std::end(known))
            throw BadTable("unknown key \"" + key + "\"");
}

void refuseOtherKeysOfElement(const JValue& object)
{
    const char* known[std::size(kKeys)];
    std::transform(std::begin(kKeys), std::end(kKeys), known,
                   [](const Key& key) { return key.name; });
    refuseOtherKeys(object, known);
}

Element elementOf(const JValue& object)
{
    if (!object.isObject())
        throw BadTable("must be an object");
    refuseOtherKeysOfElement(object);
    Element element;
    for (const Key& key : kKeys) {
        const JValue value = object[key.name];
        if (value.isValid()) {
            try {
                key.take(element, value);
            } catch (const BadTable& fault) {
                throw BadTable('"' + std::string{key.name} + "\" " + fault.what());
            }
        } else if (key.needed(element)) {
            throw BadTable("lacks \"" + std::string{key.name} + "\"");
        }
    }
    if (element.minimum > element.maximum)
        throw BadTable("\"min\" is above \"max\"");
    return element;
}

auto identifierOf(const Element& element)
{
    return std::tie(element.interface, element.name, element.index, element.device,
                    element.subdevice);
}

/// "elements[3] ("Sndout Open")", as far as there is a name.
std::string placeOf(const JValue& element, std::size_t number)
{
    std::string name;
    element["name"].asString(name);
    return "elements[" + std::to_string(number) + "]" + (name.empty() ? "" : " (\"" + name + "\")");
}

Card cardOf(const JValue& table)
{
    constexpr const char* kCardKeys[] = {"card", "elements"};
    if (!table.isObject())
        throw BadTable("a card table must be an object with \"card\" and \"elements\"");
    refuseOtherKeys(table, kCardKeys);
    Card card;
    try {
        card.name = text(table["card"], 1, kMaxCardName);
    } catch (const BadTable& fault) {
        throw BadTable("\"card\" " + std::string{fault.what()});
    }
    if (!table["elements"].isArray())
        throw BadTable("\"elements\" must be an array");
    const std::vector<JValue> elements = table["elements"].elements();
    const auto before = [](const Element* left, const Element* right) {
        return identifierOf(*left) < identifierOf(*right);
    };
    std::set<const Element*, decltype(before)> known{before};
    card.elements.reserve(elements.size()); // `known` points into it
    for (std::size_t i = 0; i < elements.size(); ++i) {
        try {
            card.elements.push_back(elementOf(elements[i]));
            if (!known.insert(&card.elements.back()).second)
                throw BadTable("is there already");
        } catch (const BadTable& fault) {
            throw BadTable(placeOf(elements[i], i) + ": " + fault.what());
        }
    }
    return card;
}

std::string contentOf(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    if (error)
        throw BadTable(error.message());
    if (bytes > kMaxFileBytes)
        throw BadTable("larger than " + std::to_string(kMaxFileBytes) + " bytes");
    std::ifstream file{path, std::ios::binary};
    if (!file)
        throw BadTable("cannot be read");
    return {std::istreambuf_iterator<char>{file}, {}};
}

} // namespace

std::string readCardFile(const std::string& path, Card& card)
{
    card = {};
    try {
        JDomParser parser{JSchema::acceptAll()};
        const JValue table = parser.parse(contentOf(path));
        if (!table.isValid())
            throw BadTable("no JSON: " + parser.errorText());
        card = cardOf(table);
    } catch (const BadTable& fault) {
        return path + ": " + fault.what();
    }
    return "";
}

std::string cardTable(const Card& card)
{
    std::string table = R"({"card":)" + JValue{card.name}.stringify() + R"(,"elements":[)";
    const char* separator = "\n";
    for (const Element& element : card.elements) {
        JValue object = JValue::object();
        for (const Key& key : kKeys)
            static_cast<void>(object.put(key.name, key.give(element)));
        table += separator + object.stringify();
        separator = ",\n";
    }
    return table + "\n]}\n";
}

} // namespace virtualtv
