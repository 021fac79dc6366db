// SPDX-License-Identifier: Apache-2.0
// The card: every element of the library's table, as the library finds and writes it.
// A silent run writes no other values than those that were read, and repeats no command: a sound
// output that was opened after another one was closed would be closed by the repetition.
#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include <alsa/asoundlib.h>

#include "checks.h"
#include "closest.h"
#include "deadline.h"
#include "kepcatalogue.h"

namespace
{

struct CardCloser {
    void operator()(snd_hctl_t* card) const { snd_hctl_close(card); }
};
using CardPtr = std::unique_ptr<snd_hctl_t, CardCloser>;

using Values = std::vector<long>;

// Elements whose last value is a command, not a state.
constexpr const char* kCommands[] = {
    "Sndout Connect",
    "Sndout Disconnect",
    "Sndout Open",
    "Sndout Close",
};

// An integer whose range goes up to what hurts.
constexpr const char* kVolume = "volume";
constexpr long kLoudest = 15;

std::string quoted(const std::string& name)
{
    return '"' + name + '"';
}

std::string textOf(const Values& values)
{
    std::string text;
    for (const long value : values)
        text += (text.empty() ? "" : ", ") + std::to_string(value);
    return text;
}

std::string because(const char* what, int error)
{
    return std::string{what} + ": " + snd_strerror(error);
}

// --- What the library writes

struct Range {
    long least;
    long greatest;
};

Range rangeOf(const kepControlInteger& integer)
{
    if (integer.numbers == nullptr)
        return {integer.minimum, integer.maximum};
    const auto [least, greatest] = std::minmax_element(
        integer.numbers->begin(), integer.numbers->end(),
        [](const kepNamedNumber& a, const kepNamedNumber& b) { return a.number < b.number; });
    return {least->number, greatest->number};
}

bool isWritten(const kepControlInteger& integer, long value)
{
    if (integer.numbers == nullptr)
        return value >= integer.minimum && value <= integer.maximum;
    return std::any_of(integer.numbers->begin(), integer.numbers->end(),
                       [value](const kepNamedNumber& named) { return named.number == value; });
}

bool isWritten(const kepControlElement& element, const Values& values)
{
    for (std::size_t i = 0; i < element.integers.size(); ++i)
        if (!isWritten(element.integers[i], values[i]))
            return false;
    return true;
}

/// Two sets of values that the library may write: the first of each list, or the least; the last,
/// or the greatest. A block's first and last port belong to the first and the last block.
std::vector<Values> trialsOf(const kepControlElement& element)
{
    Values first;
    Values last;
    for (const kepControlInteger& integer : element.integers) {
        const auto* numbers = integer.numbers;
        first.push_back(numbers != nullptr ? (*numbers)[0].number : integer.minimum);
        last.push_back(numbers != nullptr ? (*numbers)[numbers->size() - 1].number
                                          : integer.maximum);
        if (integer.name == std::string{kVolume})
            last.back() = kLoudest;
    }
    return {first, last};
}

// --- An element of the card

class Element
{
public:
    /// Looks for it as the library does; null when it is missing.
    Element(snd_hctl_t* card, const kepControlElement& wanted) : mWanted(wanted)
    {
        snd_ctl_elem_id_t* id = nullptr;
        snd_ctl_elem_id_alloca(&id);
        snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
        snd_ctl_elem_id_set_name(id, wanted.name);
        mElement = snd_hctl_find_elem(card, id);
    }

    [[nodiscard]] bool exists() const { return mElement != nullptr; }
    [[nodiscard]] bool isReadable() const { return mReadable; }
    [[nodiscard]] bool isWritable() const { return mWritable; }

    /// What is wrong with its type, count and range; "" when nothing is.
    std::string shapeFault();
    /// The values that it has; false when they cannot be read.
    int read(Values& values) const;
    [[nodiscard]] int write(const Values& values) const;

private:
    [[nodiscard]] std::string rangeFault(const snd_ctl_elem_info_t* info) const;

    const kepControlElement& mWanted;
    snd_hctl_elem_t* mElement = nullptr;
    bool mReadable = false;
    bool mWritable = false;
};

std::string Element::shapeFault()
{
    snd_ctl_elem_info_t* info = nullptr;
    snd_ctl_elem_info_alloca(&info);
    const int error = snd_hctl_elem_info(mElement, info);
    if (error < 0)
        return because("it gives no information", error);
    mReadable = snd_ctl_elem_info_is_readable(info) != 0;
    mWritable = snd_ctl_elem_info_is_writable(info) != 0;
    const snd_ctl_elem_type_t type = snd_ctl_elem_info_get_type(info);
    if (type != SND_CTL_ELEM_TYPE_INTEGER)
        return std::string{"it is of type "} + snd_ctl_elem_type_name(type) + ", not INTEGER";
    const unsigned int count = snd_ctl_elem_info_get_count(info);
    if (count != mWanted.integers.size())
        return "it takes " + std::to_string(count) + " integers, not " +
               std::to_string(mWanted.integers.size());
    return rangeFault(info);
}

std::string Element::rangeFault(const snd_ctl_elem_info_t* info) const
{
    const long minimum = snd_ctl_elem_info_get_min(info);
    const long maximum = snd_ctl_elem_info_get_max(info);
    for (const kepControlInteger& integer : mWanted.integers) {
        const Range range = rangeOf(integer);
        if (range.least < minimum || range.greatest > maximum)
            return "it takes " + std::to_string(minimum) + " to " + std::to_string(maximum) +
                   ", but " + quoted(integer.name) + " is written from " +
                   std::to_string(range.least) + " to " + std::to_string(range.greatest);
    }
    return "";
}

int Element::read(Values& values) const
{
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    const int error = snd_hctl_elem_read(mElement, value);
    for (unsigned int i = 0; i < mWanted.integers.size(); ++i)
        values.push_back(snd_ctl_elem_value_get_integer(value, i));
    return error;
}

int Element::write(const Values& values) const
{
    snd_ctl_elem_value_t* value = nullptr;
    snd_ctl_elem_value_alloca(&value);
    snd_ctl_elem_id_t* id = nullptr;
    snd_ctl_elem_id_alloca(&id);
    snd_hctl_elem_get_id(mElement, id);
    snd_ctl_elem_value_set_id(value, id);
    for (unsigned int i = 0; i < values.size(); ++i)
        snd_ctl_elem_value_set_integer(value, i, values[i]);
    return snd_hctl_elem_write(mElement, value);
}

// --- The three claims about an element

struct Claims {
    explicit Claims(const kepControlElement& element)
        : shape(quoted(element.name) + " is there and takes " +
                std::to_string(element.integers.size()) +
                (element.integers.size() == 1 ? " integer" : " integers")),
          write(quoted(element.name) + " can be written"),
          readBack(quoted(element.name) + " reads back what was written")
    {
    }
    std::string shape;
    std::string write;
    std::string readBack;
};

void skipWriting(Report& report, const Claims& claims, const std::string& reason)
{
    report.skip(claims.write, reason);
    report.skip(claims.readBack, reason);
}

std::string missing(snd_hctl_t* card, const std::string& name)
{
    Names others;
    for (snd_hctl_elem_t* each = snd_hctl_first_elem(card); each != nullptr;
         each = snd_hctl_elem_next(each)) {
        others.emplace_back(snd_hctl_elem_get_name(each));
        if (others.back() == name)
            return "the card has it as interface " +
                   std::string{snd_ctl_elem_iface_name(snd_hctl_elem_get_interface(each))} +
                   ", index " + std::to_string(snd_hctl_elem_get_index(each)) +
                   ", not as interface MIXER, index 0";
    }
    const std::string hint = closest(name, others);
    return "the card has no element of that name" +
           (hint.empty() ? "" : ", but one named " + quoted(hint));
}

/// What may be written in a silent run: the values that it has. Why not, "" when it may.
std::string reasonToKeepOff(const kepControlElement& wanted, const Element& element)
{
    if (!element.isReadable())
        return "it does not tell what it holds; --audible writes it";
    if (std::find_if(std::begin(kCommands), std::end(kCommands), [&](const char* command) {
            return wanted.name == std::string{command};
        }) != std::end(kCommands))
        return "writing it is a command; --audible writes it";
    return "";
}

std::string writeFaultOf(const Element& element, const Values& values, const std::string& claim,
                         unsigned int limitMs)
{
    const Deadline deadline{claim, limitMs};
    const int error = element.write(values);
    return error < 0 ? because(("it refuses " + textOf(values)).c_str(), error) : deadline.fault();
}

std::string readFaultOf(const Element& element, Values& got, const std::string& claim,
                        unsigned int limitMs)
{
    const Deadline deadline{claim, limitMs};
    const int error = element.read(got);
    return error < 0 ? because("it cannot be read", error) : deadline.fault();
}

std::string readBackFaultOf(const Element& element, const Values& written, const std::string& claim,
                            unsigned int limitMs)
{
    Values got;
    const std::string fault = readFaultOf(element, got, claim, limitMs);
    return !fault.empty() || got == written
               ? fault
               : "it was written " + textOf(written) + ", and reads " + textOf(got);
}

/// Writes one set of values after the other; each has to be read back where that is possible.
void tryWriting(Report& report, const Conditions& conditions, const Claims& claims,
                const Element& element, const std::vector<Values>& trials)
{
    std::string writeFault;
    std::string readFault;
    for (const Values& trial : trials) { // to the last, which may be what it held before
        const std::string fault = writeFaultOf(element, trial, claims.write, conditions.limitMs);
        if (writeFault.empty())
            writeFault = fault;
        if (fault.empty() && readFault.empty() && element.isReadable())
            readFault = readBackFaultOf(element, trial, claims.readBack, conditions.limitMs);
    }
    report.tell(claims.write, writeFault);
    if (!element.isReadable())
        report.skip(claims.readBack, "the card does not let it be read");
    else if (!writeFault.empty())
        report.skip(claims.readBack, "it cannot be written");
    else
        report.tell(claims.readBack, readFault);
}

void checkWriting(Report& report, const Conditions& conditions, const Claims& claims,
                  const kepControlElement& wanted, const Element& element)
{
    if (!element.isWritable()) {
        report.tell(claims.write, "the card does not let it be written");
        report.skip(claims.readBack, "it cannot be written");
        return;
    }
    Values current;
    const std::string fault =
        element.isReadable() ? readFaultOf(element, current, claims.readBack, conditions.limitMs)
                             : "";
    if (!fault.empty()) {
        report.skip(claims.write, "it cannot be read");
        report.tell(claims.readBack, fault);
        return;
    }
    const std::string reason = reasonToKeepOff(wanted, element);
    const bool usual = reason.empty() && isWritten(wanted, current);
    if (conditions.audible) {
        std::vector<Values> trials = trialsOf(wanted);
        if (usual)
            trials.push_back(current); // as it was before
        return tryWriting(report, conditions, claims, element, trials);
    }
    if (!reason.empty())
        return skipWriting(report, claims, reason);
    // A driver may hold what it does not take: before the first write, say.
    if (!usual && element.write(current) < 0)
        return skipWriting(report, claims,
                           "it refuses what it holds, which is never written; --audible writes "
                           "other values");
    tryWriting(report, conditions, claims, element, {current});
}

void checkElement(Report& report, const Conditions& conditions, snd_hctl_t* card,
                  const kepControlElement& wanted)
{
    const Claims claims{wanted};
    Element element{card, wanted};
    std::string fault;
    {
        const Deadline deadline{quoted(wanted.name), conditions.limitMs};
        fault = element.exists() ? element.shapeFault() : missing(card, wanted.name);
        if (fault.empty())
            fault = deadline.fault();
    }
    report.tell(claims.shape, fault);
    if (fault.empty())
        checkWriting(report, conditions, claims, wanted, element);
    else
        skipWriting(report, claims, "it is not as it has to be");
}

/// Opens the card and loads its elements, as the library does for each write.
CardPtr opened(const std::string& name, std::string& fault)
{
    snd_hctl_t* handle = nullptr;
    int error = snd_hctl_open(&handle, name.c_str(), 0);
    CardPtr card{error < 0 ? nullptr : handle};
    if (error < 0) {
        fault = because((name + " cannot be opened").c_str(), error) +
                " (the virtual cards are seen after: eval \"$(kepctl env)\")";
        return card;
    }
    error = snd_hctl_load(card.get());
    if (error < 0)
        fault = because((name + " does not list its elements").c_str(), error);
    return card;
}

} // namespace

void checkCard(Report& report, const Conditions& conditions)
{
    const std::string name = kepCatalogue::build().card;
    report.begin("Elements of the card " + name);
    std::string fault;
    std::string slow;
    CardPtr card;
    {
        const Deadline deadline{"the card " + name, conditions.limitMs};
        card = opened(name, fault);
        slow = deadline.fault();
    }
    report.tell("the card can be opened", fault.empty() ? slow : fault);
    for (const kepControlElement& element : kepCatalogue::controlElements()) {
        if (fault.empty())
            checkElement(report, conditions, card.get(), element);
        else
            report.skip(Claims{element}.shape, "the card cannot be opened");
    }
}
