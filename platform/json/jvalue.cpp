// SPDX-License-Identifier: Apache-2.0
// JSON values over json-c, whose null is a null pointer and whose keys are C strings.
// json-c frees and prints by recursion, so no document may grow deeper than JValue::kMaxDepth.
#include "jvalue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include <json-c/json.h>

namespace
{

constexpr int kTextFlags = JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE;

json_object* orThrow(json_object* node)
{
    if (node == nullptr)
        throw std::bad_alloc{};
    return node;
}

bool isOfType(const json_object* node, json_type type) noexcept
{
    return node != nullptr && json_object_is_type(node, type) != 0;
}

bool holdsNul(const std::string& key) noexcept
{
    return key.find('\0') != std::string::npos;
}

bool isSameKey(const char* one, const char* other) noexcept
{
    return *one == *other && std::strcmp(one, other) == 0; // most differ at once
}

/// The member of that key; null when the object has none.
const lh_entry* findMember(const json_object* object, const char* key) noexcept
{
    lh_table* members = json_object_get_object(object);
    // To make a key's hash takes longer than to look at a few others.
    constexpr int kFew = 16;
    if (members->count > kFew)
        return lh_table_lookup_entry(members, key);
    const lh_entry* member = members->head;
    while (member != nullptr && !isSameKey(static_cast<const char*>(lh_entry_k(member)), key))
        member = member->next;
    return member;
}

json_object* nodeOf(const lh_entry& member) noexcept
{
    return static_cast<json_object*>(lh_entry_v(&member));
}

/// How many containers stand inside one another in `node`, itself included; 0 for a scalar.
int depthOf(json_object* node) noexcept
{
    int inner = 0;
    if (isOfType(node, json_type_object)) {
        json_object_object_foreach(node, key, member)
        {
            static_cast<void>(key);
            inner = std::max(inner, depthOf(member));
        }
        return inner + 1;
    }
    if (isOfType(node, json_type_array)) {
        for (std::size_t i = 0; i < json_object_array_length(node); ++i)
            inner = std::max(inner, depthOf(json_object_array_get_idx(node, i)));
        return inner + 1;
    }
    return 0;
}

/// Whether the text stands in JSON as it is.
bool needsNoEscape(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\';
    });
}

std::string_view contentOf(json_object* text)
{
    return {json_object_get_string(text),
            static_cast<std::size_t>(json_object_get_string_len(text))};
}

/// The nearest integer toward zero that fits. A NaN cannot occur: neither the parser nor JValue
/// admits it.
template <typename Integer>
Integer saturate(double number) noexcept
{
    using Limits = std::numeric_limits<Integer>;
    if (number >= static_cast<double>(Limits::max()))
        return Limits::max();
    if (number <= static_cast<double>(Limits::min()))
        return Limits::min();
    return static_cast<Integer>(number);
}

} // namespace

JValue::Kind JValue::kindOf(const json_object* node) noexcept
{
    switch (json_object_get_type(node)) {
    case json_type_boolean:
        return json_object_get_boolean(node) != 0 ? Kind::True : Kind::False;
    case json_type_double:
        return Kind::Double;
    case json_type_int:
        return Kind::Integer;
    case json_type_object:
        return Kind::Object;
    case json_type_array:
        return Kind::Array;
    case json_type_string:
        return Kind::String;
    case json_type_null:
        break;
    }
    return Kind::Null;
}

JValue::JValue(json_object* owned, int level) noexcept
    : mNode(owned), mLevel(level), mKind(kindOf(owned))
{
}

JValue::JValue(double value)
{
    if (!std::isfinite(value))
        return;
    // The shortest text that reads back as the same number; json-c's own would show 0.1 with 17
    // digits.
    std::array<char, 32> text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, value);
    mNode = orThrow(json_object_new_double_s(value, text.data()));
    mKind = Kind::Double;
}

JValue::JValue(std::string_view text)
    : mNode(orThrow(json_object_new_string_len(text.data(), static_cast<int>(text.size())))),
      mKind(Kind::String)
{
}

JValue JValue::ofSigned(std::int64_t value)
{
    return {orThrow(json_object_new_int64(value)), 1};
}

JValue JValue::ofUnsigned(std::uint64_t value)
{
    return {orThrow(json_object_new_uint64(value)), 1};
}

JValue JValue::object()
{
    return {orThrow(json_object_new_object()), 1};
}

JValue JValue::array()
{
    return {orThrow(json_object_new_array()), 1};
}

JValue JValue::invalid() noexcept
{
    JValue value;
    value.mKind = Kind::Invalid;
    return value;
}

JValue::JValue(const JValue& other) noexcept
    : mNode(json_object_get(other.mNode)), mLevel(other.mLevel), mKind(other.mKind)
{
}

JValue& JValue::operator=(JValue other) noexcept
{
    std::swap(mNode, other.mNode);
    mLevel = other.mLevel;
    mKind = other.mKind;
    return *this;
}

void JValue::drop() noexcept
{
    json_object_put(mNode);
}

bool JValue::asString(std::string& text) const
{
    if (!isString()) {
        text.clear();
        return false;
    }
    text.assign(contentOf(mNode));
    return true;
}

bool JValue::asBool(bool& value) const noexcept
{
    value = mKind == Kind::True;
    return isBool();
}

bool JValue::asNumber(std::int32_t& number) const noexcept
{
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t wide = 0;
    const bool converted = asNumber(wide);
    number =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(wide, Limits::min(), Limits::max()));
    return converted;
}

bool JValue::asNumber(std::int64_t& number) const noexcept
{
    number = 0;
    if (mKind == Kind::Integer)
        number = json_object_get_int64(mNode);
    else if (mKind == Kind::Double)
        number = saturate<std::int64_t>(json_object_get_double(mNode));
    return isNumber();
}

bool JValue::asNumber(double& number) const noexcept
{
    using Limits = std::numeric_limits<double>;
    const double exact = isNumber() ? json_object_get_double(mNode) : 0.0;
    number = std::clamp(exact, Limits::lowest(), Limits::max()); // a text such as 1e400 is infinite
    return isNumber();
}

std::string JValue::asString() const
{
    std::string text;
    asString(text);
    return text;
}

bool JValue::asBool() const noexcept
{
    bool value = false;
    asBool(value);
    return value;
}

std::size_t JValue::size() const noexcept
{
    if (isObject())
        return static_cast<std::size_t>(json_object_object_length(mNode));
    return isArray() ? json_object_array_length(mNode) : 0;
}

bool JValue::hasKey(const std::string& key) const noexcept
{
    return !holdsNul(key) && hasKey(key.c_str());
}

bool JValue::hasKey(const char* key) const noexcept
{
    return isObject() && findMember(mNode, key) != nullptr;
}

JValue JValue::operator[](const std::string& key) const noexcept
{
    return holdsNul(key) ? invalid() : (*this)[key.c_str()];
}

JValue JValue::operator[](const char* key) const noexcept
{
    const lh_entry* member = isObject() ? findMember(mNode, key) : nullptr;
    if (member == nullptr)
        return invalid();
    return {json_object_get(nodeOf(*member)), mLevel + 1};
}

JValue JValue::element(std::size_t index) const noexcept
{
    if (!isArray() || index >= json_object_array_length(mNode))
        return invalid();
    return {json_object_get(json_object_array_get_idx(mNode, index)), mLevel + 1};
}

std::vector<JValue::Member> JValue::members() const
{
    std::vector<Member> all;
    if (!isObject())
        return all;
    all.reserve(size());
    for (const auto& [key, value] : eachMember())
        all.emplace_back(key, value);
    return all;
}

std::vector<JValue> JValue::elements() const
{
    std::vector<JValue> all;
    if (!isArray())
        return all;
    all.reserve(size());
    for (std::size_t i = 0; i < size(); ++i)
        all.push_back(element(i));
    return all;
}

JValue::Walk JValue::eachMember() const noexcept
{
    return Walk{*this};
}

JValue::Walk::Walk(JValue object) noexcept : mObject(std::move(object))
{
    if (!mObject.isObject())
        return;
    mEntry = json_object_get_object(mObject.mNode)->head;
    mLent.value.mLevel = mObject.mLevel + 1;
    lend();
}

void JValue::Walk::goOn() noexcept
{
    mEntry = mEntry->next;
    lend();
}

void JValue::Walk::lend() noexcept
{
    if (mEntry == nullptr)
        return;
    mLent.key = static_cast<const char*>(lh_entry_k(mEntry));
    mLent.value.mNode = nodeOf(*mEntry);
    mLent.value.mKind = kindOf(mLent.value.mNode);
}

bool JValue::fitsInside(const JValue& value) const noexcept
{
    return value.isValid() && mLevel + value.depth() <= kMaxDepth;
}

json_object* JValue::copyOfNode() const
{
    if (isBool())
        return orThrow(json_object_new_boolean(mKind == Kind::True ? 1 : 0));
    json_object* copy = nullptr;
    if (mNode != nullptr && json_object_deep_copy(mNode, &copy, nullptr) != 0)
        throw std::bad_alloc{};
    return copy;
}

bool JValue::put(const std::string& key, const JValue& value)
{
    if (!isObject() || holdsNul(key) || !fitsInside(value))
        return false;
    json_object* copy = value.copyOfNode();
    if (json_object_object_add(mNode, key.c_str(), copy) != 0) {
        json_object_put(copy);
        throw std::bad_alloc{};
    }
    return true;
}

json_object* JValue::takeNode()
{
    return isBool() ? copyOfNode() : std::exchange(mNode, nullptr);
}

bool JValue::putOwn(const char* key, JValue scalar)
{
    if (!isObject())
        return false;
    json_object* node = scalar.takeNode();
    if (json_object_object_add(mNode, key, node) != 0) {
        json_object_put(node);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::appendOwn(JValue scalar)
{
    if (!isArray())
        return false;
    json_object* node = scalar.takeNode();
    if (json_object_array_add(mNode, node) != 0) {
        json_object_put(node);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::append(const JValue& value)
{
    if (!isArray() || !fitsInside(value))
        return false;
    json_object* copy = value.copyOfNode();
    if (json_object_array_add(mNode, copy) != 0) {
        json_object_put(copy);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::remove(const std::string& key)
{
    if (!hasKey(key))
        return false;
    json_object_object_del(mNode, key.c_str());
    return true;
}

bool JValue::remove(std::size_t index)
{
    return isArray() && index < size() && json_object_array_del_idx(mNode, index, 1) == 0;
}

std::string JValue::stringify() const
{
    if (isBool())
        return mKind == Kind::True ? "true" : "false";
    // For what is plain json-c would make a buffer, which stays in the node.
    if (isObject() && size() == 0)
        return "{}";
    if (mKind == Kind::Integer) {
        const std::int64_t number = json_object_get_int64(mNode);
        if (number != std::numeric_limits<std::int64_t>::max()) // it may be larger
            return std::to_string(number);
    }
    if (isString() && needsNoEscape(contentOf(mNode))) {
        const std::string_view content = contentOf(mNode);
        std::string text;
        text.reserve(content.size() + 2);
        text.append(1, '"').append(content).append(1, '"');
        return text;
    }
    std::size_t length = 0;
    const char* text = json_object_to_json_string_length(mNode, kTextFlags, &length);
    return text != nullptr ? std::string{text, length} : throw std::bad_alloc{};
}

int JValue::depth() const noexcept
{
    return depthOf(mNode);
}

JValue JValue::deepCopy() const
{
    return isValid() ? JValue{copyOfNode(), 1} : invalid();
}

bool JValue::operator==(const JValue& other) const noexcept
{
    if (isBool() && other.isBool())
        return asBool() == other.asBool();
    return isValid() == other.isValid() && !isBool() && !other.isBool() &&
           json_object_equal(mNode, other.mNode) != 0;
}
