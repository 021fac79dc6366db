// SPDX-License-Identifier: Apache-2.0
// The virtual cards: a control plugin that libasound loads itself, through its external control
// interface. It is as strict as a driver, reports every write to the journal and fails where a
// fault was planted.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include <alsa/asoundlib.h>
#include <alsa/control_external.h>

#include "cards.h"
#include "cardstate.h"
#include "event.h"
#include "faults.h"
#include "journal.h"
#include "subscription.h"

namespace virtualtv
{
namespace
{

/// One open handle on a card.
struct CardHandle {
    snd_ctl_ext_t ext = {};
    std::string name; // as opened
    std::span<const Element> elements;
    CardState::Slot firstSlot = 0;
    const snd_ctl_elem_id_t* identifier = nullptr; // of the element looked up last
    bool subscribed = false;
    std::optional<Subscription> subscription; // kept when it ends: its descriptor may be in use
};

CardHandle& handleOf(snd_ctl_ext_t* ext)
{
    return *static_cast<CardHandle*>(ext->private_data);
}

const Element& elementOf(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key)
{
    return handleOf(ext).elements[key];
}

CardState::Slot slotOf(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key)
{
    return handleOf(ext).firstSlot + key;
}

/// The status planted for this step of an access, reported when it makes the step fail.
int faultAt(FaultPoint point, const char* stage, const std::string& element,
            const std::string& card)
{
    const int status = injectedStatus(point, element, card);
    if (status < 0 && listening()) {
        Event event{"control"};
        event.put("card", card);
        event.put("stage", stage);
        event.put("status", status);
        report(event);
    }
    return status;
}

template <typename Value>
void reportWrite(const std::string& card, const Element& element, const Value* values, int status)
{
    if (!listening())
        return;
    std::int64_t written[kMaxValues]; // never filled whole: most elements have few values
    std::copy_n(values, element.count, written);
    Event event{"control"};
    event.put("card", card);
    event.put("element", element.name);
    event.put("values",
              std::span<const std::int64_t>{written, static_cast<std::size_t>(element.count)});
    event.put("status", status);
    report(event);
}

void closeCard(snd_ctl_ext_t* ext)
{
    countCardClosed();
    delete &handleOf(ext);
}

int elementCount(snd_ctl_ext_t* ext)
{
    return static_cast<int>(handleOf(ext).elements.size());
}

snd_ctl_elem_iface_t interfaceOf(const Element& element)
{
    return static_cast<snd_ctl_elem_iface_t>(element.interface); // in the same order
}

/// In an identifier that is all zero.
inline void fillIdentifier(snd_ctl_elem_id_t* id, const Element& element)
{
    snd_ctl_elem_id_set_interface(id, interfaceOf(element));
    snd_ctl_elem_id_set_name(id, element.name.c_str());
    if ((element.index | element.device | element.subdevice) == 0)
        return;
    snd_ctl_elem_id_set_index(id, element.index);
    snd_ctl_elem_id_set_device(id, element.device);
    snd_ctl_elem_id_set_subdevice(id, element.subdevice);
}

int listElement(snd_ctl_ext_t* ext, unsigned int offset, snd_ctl_elem_id_t* id)
{
    CardHandle& handle = handleOf(ext);
    // libasound asks for single identifiers as well, but then it has filled in the number already.
    if (offset == 0 && snd_ctl_elem_id_get_numid(id) == 0) {
        const int status = faultAt(FaultPoint::CardLoad, "load", "", handle.name);
        if (status < 0)
            return status;
    }
    if (offset >= handle.elements.size())
        return -EINVAL;
    fillIdentifier(id, handle.elements[offset]);
    return 0;
}

bool hasIdentifier(const Element& element, const snd_ctl_elem_id_t* id)
{
    return snd_ctl_elem_id_get_index(id) == element.index &&
           snd_ctl_elem_id_get_interface(id) == interfaceOf(element) &&
           snd_ctl_elem_id_get_device(id) == element.device &&
           snd_ctl_elem_id_get_subdevice(id) == element.subdevice &&
           snd_ctl_elem_id_get_name(id) == element.name;
}

snd_ctl_ext_key_t findElement(snd_ctl_ext_t* ext, const snd_ctl_elem_id_t* id)
{
    CardHandle& handle = handleOf(ext);
    const std::span<const Element> elements = handle.elements;
    handle.identifier = id;
    const unsigned int number = snd_ctl_elem_id_get_numid(id); // counts from 1; 0 when not known
    if (number > 0)
        return number <= elements.size() ? number - 1 : SND_CTL_EXT_KEY_NOT_FOUND;
    for (std::size_t key = 0; key < elements.size(); ++key)
        if (hasIdentifier(elements[key], id))
            return key;
    return SND_CTL_EXT_KEY_NOT_FOUND;
}

/// libasound asks for attributes on every read and write, too. Only when it is asked for an
/// element's information do the identifier it looked up and the access it wants filled lie in one
/// record.
bool asksForInformation(const CardHandle& handle, const unsigned int* access)
{
    const auto* record = reinterpret_cast<const char*>(handle.identifier);
    const auto* field = reinterpret_cast<const char*>(access);
    return std::less_equal{}(record, field) &&
           std::less{}(field, record + snd_ctl_elem_info_sizeof());
}

// In the order of ElementType.
constexpr snd_ctl_elem_type_t kTypes[] = {SND_CTL_ELEM_TYPE_BOOLEAN, SND_CTL_ELEM_TYPE_INTEGER,
                                          SND_CTL_ELEM_TYPE_INTEGER64, SND_CTL_ELEM_TYPE_ENUMERATED,
                                          SND_CTL_ELEM_TYPE_BYTES};

constexpr struct {
    ElementAccess ours;
    snd_ctl_ext_access_t libasounds;
} kAccesses[] = {
    {kReadable, SND_CTL_EXT_ACCESS_READ},
    {kWritable, SND_CTL_EXT_ACCESS_WRITE},
    {kVolatile, SND_CTL_EXT_ACCESS_VOLATILE},
    {kInactive, SND_CTL_EXT_ACCESS_INACTIVE},
};

unsigned int accessOf(const Element& element)
{
    unsigned int access = 0;
    for (const auto& row : kAccesses)
        if ((element.access & row.ours) != 0)
            access |= row.libasounds;
    return access;
}

int attributes(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, int* type, unsigned int* access,
               unsigned int* count)
{
    const Element& element = elementOf(ext, key);
    if (asksForInformation(handleOf(ext), access)) {
        const int status = faultAt(FaultPoint::CardInfo, "info", element.name, handleOf(ext).name);
        if (status < 0)
            return status;
    }
    *type = kTypes[static_cast<std::size_t>(element.type)];
    *access = accessOf(element);
    *count = static_cast<unsigned int>(element.count);
    return 0;
}

/// Of integers of either size.
template <typename Value>
int rangeInfo(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, Value* minimum, Value* maximum,
              Value* step)
{
    const Element& element = elementOf(ext, key);
    *minimum = static_cast<Value>(element.minimum);
    *maximum = static_cast<Value>(element.maximum);
    *step = static_cast<Value>(element.step);
    return 0;
}

int itemCount(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, unsigned int* items)
{
    *items = static_cast<unsigned int>(elementOf(ext, key).items.size());
    return 0;
}

int itemName(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, unsigned int item, char* name,
             std::size_t space)
{
    const std::vector<std::string>& items = elementOf(ext, key).items;
    if (item >= items.size() || space == 0)
        return -EINVAL;
    name[items[item].copy(name, space - 1)] = '\0';
    return 0;
}

// --- Values. libasound has an array of its own for every type.

template <typename Value>
int readValues(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, Value* values)
{
    const Element& element = elementOf(ext, key);
    if ((element.access & kReadable) == 0)
        return -EPERM;
    std::int64_t stored[kMaxValues];
    const std::span read{stored, static_cast<std::size_t>(element.count)};
    const int status = CardState::instance().read(slotOf(ext, key), read);
    if (status == 0)
        std::transform(read.begin(), read.end(), values,
                       [](std::int64_t value) { return static_cast<Value>(value); });
    return status;
}

/// Like a driver's: 1 when the values have changed, 0 when they were the same, a negative errno.
template <typename Value>
int store(CardState::Slot slot, const Element& element, const Value* values)
{
    if ((element.access & kWritable) == 0)
        return -EPERM;
    std::int64_t stored[kMaxValues];
    const auto count = static_cast<std::size_t>(element.count);
    for (std::size_t i = 0; i < count; ++i) {
        stored[i] = values[i];
        if (stored[i] < element.minimum || stored[i] > element.maximum)
            return -EINVAL;
    }
    return CardState::instance().write(slot, {stored, count});
}

template <typename Value>
int writeValues(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, Value* values)
{
    const Element& element = elementOf(ext, key);
    const std::string& card = handleOf(ext).name;
    int status = injectedStatus(FaultPoint::CardWrite, element.name, card);
    if (status >= 0)
        status = store(slotOf(ext, key), element, values);
    reportWrite(card, element, values, std::min(status, 0));
    return status;
}

int readBytes(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, unsigned char* data, std::size_t)
{
    return readValues(ext, key, data);
}

int writeBytes(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, unsigned char* data, std::size_t)
{
    return writeValues(ext, key, data);
}

// --- Events

Subscription& subscriptionOf(CardHandle& handle)
{
    if (!handle.subscription)
        handle.subscription.emplace(handle.elements, handle.firstSlot);
    return *handle.subscription;
}

void subscribe(snd_ctl_ext_t* ext, int wanted)
{
    CardHandle& handle = handleOf(ext);
    if (std::exchange(handle.subscribed, wanted != 0) == handle.subscribed)
        return;
    if (handle.subscription)
        handle.subscription->restart();
    else
        subscriptionOf(handle);
}

/// A client that polls is never kept here, even if it did not ask for that: one that waits for
/// several things must not be held by one of them. One that only reads waits here, as with a
/// driver.
int readEvent(snd_ctl_ext_t* ext, snd_ctl_elem_id_t* id, unsigned int* mask)
{
    CardHandle& handle = handleOf(ext);
    if (!handle.subscribed)
        return -EBADFD;
    Subscription& subscription = subscriptionOf(handle);
    if (ext->nonblock == 0 && !subscription.polled()) {
        const int status = subscription.wait();
        if (status < 0)
            return status;
    }
    const std::optional<std::size_t> changed = subscription.next();
    if (!changed)
        return -EAGAIN;
    snd_ctl_elem_id_clear(id);
    fillIdentifier(id, handle.elements[*changed]);
    snd_ctl_elem_id_set_numid(id, static_cast<unsigned int>(*changed) + 1);
    *mask = SND_CTL_EVENT_MASK_VALUE;
    return 1;
}

int pollDescriptorCount(snd_ctl_ext_t*)
{
    return 1;
}

int pollDescriptors(snd_ctl_ext_t* ext, pollfd* descriptors, unsigned int space)
{
    const int descriptor = subscriptionOf(handleOf(ext)).descriptor();
    if (descriptor < 0 || space == 0)
        return std::min(descriptor, 0);
    *descriptors = {descriptor, POLLIN, 0};
    return 1;
}

/// A write to the other card or of the same values wakes us, too, but is no event. The clock is
/// told whatever there is: libasound begins a wait anew when it was for nothing, and would never
/// end it.
int pollEvents(snd_ctl_ext_t* ext, pollfd* descriptors, unsigned int count, unsigned short* events)
{
    CardHandle& handle = handleOf(ext);
    *events = count > 0 ? static_cast<unsigned short>(descriptors->revents) : 0;
    if ((*events & POLLIN) == 0)
        return 0;
    Subscription& subscription = subscriptionOf(handle);
    if (!handle.subscribed)
        subscription.restart();
    if (!subscription.pending() && !subscription.looksByClock())
        *events = static_cast<unsigned short>(*events & ~POLLIN);
    return 0;
}

constexpr snd_ctl_ext_callback_t kCallbacks = {
    .close = closeCard,
    .elem_count = elementCount,
    .elem_list = listElement,
    .find_elem = findElement,
    .free_key = nullptr,
    .get_attribute = attributes,
    .get_integer_info = rangeInfo,
    .get_integer64_info = rangeInfo,
    .get_enumerated_info = itemCount,
    .get_enumerated_name = itemName,
    .read_integer = readValues,
    .read_integer64 = readValues,
    .read_enumerated = readValues,
    .read_bytes = readBytes,
    .read_iec958 = nullptr,
    .write_integer = writeValues,
    .write_integer64 = writeValues,
    .write_enumerated = writeValues,
    .write_bytes = writeBytes,
    .write_iec958 = nullptr,
    .subscribe_events = subscribe,
    .read_event = readEvent,
    .poll_descriptors_count = pollDescriptorCount,
    .poll_descriptors = pollDescriptors,
    .poll_revents = pollEvents,
};

// What the ALSA configuration passes of a card: its number or its name, and which.
constexpr struct {
    const char* key;
    const char* value;
    Card Cards::*card;
} kCards[] = {
    {"number", "0", &Cards::television},
    {"number", KEP_CARD_NUMBER, &Cards::television},
    {"name", "default", &Cards::mixer},
};

/// The card that the ALSA configuration means; null for an unknown one.
const Card* findCard(const Cards& all, snd_config_t* configuration)
{
    for (const auto& row : kCards) {
        snd_config_t* entry = nullptr;
        const char* given = nullptr;
        if (snd_config_search(configuration, row.key, &entry) >= 0 &&
            snd_config_get_string(entry, &given) >= 0 && std::strcmp(given, row.value) == 0)
            return &(all.*row.card);
    }
    return nullptr;
}

template <std::size_t Size>
void fill(char (&field)[Size], std::string_view text)
{
    field[text.copy(field, Size - 1)] = '\0';
}

int openCard(snd_ctl_t** opened, const char* name, snd_config_t* configuration, int mode)
{
    auto handle = std::make_unique<CardHandle>();
    handle->name = name;
    const Cards& all = cards();
    const Card* card = findCard(all, configuration);
    if (card == nullptr)
        return -ENOENT;
    const bool television = card == &all.television;
    if (television && !all.problem.empty()) {
        SNDERR("%s", all.problem.c_str());
        return -EINVAL;
    }
    handle->elements = card->elements;
    handle->firstSlot = television ? 0 : all.television.elements.size();
    int status = faultAt(FaultPoint::CardOpen, "open", "", handle->name);
    if (status >= 0)
        status = CardState::instance().open();
    if (status < 0)
        return status;

    snd_ctl_ext_t& ext = handle->ext;
    ext.version = SND_CTL_EXT_VERSION;
    ext.card_idx = television ? 0 : 1;
    fill(ext.id, "kepvirtual");
    fill(ext.driver, "kepvirtual");
    fill(ext.name, card->name);
    fill(ext.longname, card->name);
    fill(ext.mixername, card->name);
    ext.poll_fd = -1;
    ext.callback = &kCallbacks;
    ext.private_data = handle.get();
    status = snd_ctl_ext_create(&ext, name, mode);
    if (status < 0)
        return status;
    countCardOpened();
    *opened = handle.release()->ext.handle; // closeCard gives it back
    return status;
}

} // namespace
} // namespace virtualtv

extern "C" {
VIRTUALTV_EXPORT SND_CTL_PLUGIN_DEFINE_FUNC(kepvirtual)
try {
    static_cast<void>(root);
    return virtualtv::openCard(handlep, name, conf, mode);
} catch (const std::bad_alloc&) {
    return -ENOMEM;
}
#pragma GCC diagnostic ignored "-Wpedantic" // the macro brings a semicolon of its own
VIRTUALTV_EXPORT SND_CTL_PLUGIN_SYMBOL(kepvirtual)
}
