// SPDX-License-Identifier: Apache-2.0
// The virtual cards: a control plugin that libasound loads itself, through its external control
// interface. It is as strict as a driver, reports every write to the journal and fails where a
// fault was planted.
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

#include <alsa/asoundlib.h>
#include <alsa/control_external.h>

#include "cardstate.h"
#include "cardtable.h"
#include "faults.h"
#include "journal.h"

namespace virtualtv
{
namespace
{

/// One open handle on a card.
struct CardHandle {
    snd_ctl_ext_t ext = {};
    std::string name; // as opened
    const Card* card = nullptr;
    int firstSlot = 0;
    const snd_ctl_elem_id_t* identifier = nullptr; // of the element looked up last
};

CardHandle& handleOf(snd_ctl_ext_t* ext)
{
    return *static_cast<CardHandle*>(ext->private_data);
}

const Element& elementOf(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key)
{
    return handleOf(ext).card->elements[key];
}

int slotOf(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key)
{
    return handleOf(ext).firstSlot + static_cast<int>(key);
}

/// The status planted for this step of an access, reported when it makes the step fail.
int faultAt(FaultPoint point, const char* stage, const char* element, const std::string& card)
{
    const int status = injectedStatus(point, element, card);
    if (status < 0 && listening()) {
        JValue event = JValue::object();
        event.put("event", "control");
        event.put("card", card);
        event.put("stage", stage);
        event.put("status", status);
        report(event);
    }
    return status;
}

void reportWrite(const std::string& card, const Element& element, const long* values, int status)
{
    if (!listening())
        return;
    JValue event = JValue::object();
    event.put("event", "control");
    event.put("card", card);
    event.put("element", element.name);
    JValue written = JValue::array();
    for (int i = 0; i < element.count; ++i)
        written.append(values[i]);
    event.put("values", written);
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
    return static_cast<int>(handleOf(ext).card->elements.size());
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
    if (offset >= handle.card->elements.size())
        return -EINVAL;
    snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
    snd_ctl_elem_id_set_name(id, handle.card->elements[offset].name);
    return 0;
}

bool hasIdentifier(const Element& element, const snd_ctl_elem_id_t* id)
{
    return snd_ctl_elem_id_get_interface(id) == SND_CTL_ELEM_IFACE_MIXER &&
           snd_ctl_elem_id_get_index(id) == 0 &&
           std::strcmp(snd_ctl_elem_id_get_name(id), element.name) == 0;
}

snd_ctl_ext_key_t findElement(snd_ctl_ext_t* ext, const snd_ctl_elem_id_t* id)
{
    CardHandle& handle = handleOf(ext);
    const std::span<const Element> elements = handle.card->elements;
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

int attributes(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, int* type, unsigned int* access,
               unsigned int* count)
{
    const Element& element = elementOf(ext, key);
    if (asksForInformation(handleOf(ext), access)) {
        const int status = faultAt(FaultPoint::CardInfo, "info", element.name, handleOf(ext).name);
        if (status < 0)
            return status;
    }
    *type = element.type == ElementType::Boolean ? SND_CTL_ELEM_TYPE_BOOLEAN
                                                 : SND_CTL_ELEM_TYPE_INTEGER;
    *access = SND_CTL_EXT_ACCESS_READWRITE;
    *count = static_cast<unsigned int>(element.count);
    return 0;
}

int integerInfo(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, long* minimum, long* maximum, long* step)
{
    const Element& element = elementOf(ext, key);
    *minimum = element.minimum;
    *maximum = element.maximum;
    *step = 1;
    return 0;
}

int readValues(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, long* values)
{
    std::int32_t stored[kMaxValues];
    const std::span read{stored, static_cast<std::size_t>(elementOf(ext, key).count)};
    const int status = CardState::instance().read(slotOf(ext, key), read);
    if (status == 0)
        std::copy(read.begin(), read.end(), values);
    return status;
}

/// Like a driver's: 1 when the values have changed, 0 when they were the same, a negative errno.
int store(int slot, const Element& element, const long* values)
{
    std::int32_t before[kMaxValues];
    std::int32_t after[kMaxValues];
    const auto count = static_cast<std::size_t>(element.count);
    for (std::size_t i = 0; i < count; ++i) {
        if (values[i] < element.minimum || values[i] > element.maximum)
            return -EINVAL;
        after[i] = static_cast<std::int32_t>(values[i]);
    }
    CardState& state = CardState::instance();
    int status = state.read(slot, {before, count});
    if (status == 0)
        status = state.write(slot, {after, count});
    if (status < 0)
        return status;
    return std::equal(before, before + count, after) ? 0 : 1;
}

int writeValues(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, long* values)
{
    const Element& element = elementOf(ext, key);
    const std::string& card = handleOf(ext).name;
    int status = injectedStatus(FaultPoint::CardWrite, element.name, card);
    if (status >= 0)
        status = store(slotOf(ext, key), element, values);
    reportWrite(card, element, values, std::min(status, 0));
    return status;
}

int noEvent(snd_ctl_ext_t*, snd_ctl_elem_id_t*, unsigned int*)
{
    return -EAGAIN;
}

constexpr snd_ctl_ext_callback_t kCallbacks = {
    .close = closeCard,
    .elem_count = elementCount,
    .elem_list = listElement,
    .find_elem = findElement,
    .free_key = nullptr,
    .get_attribute = attributes,
    .get_integer_info = integerInfo,
    .get_integer64_info = nullptr,
    .get_enumerated_info = nullptr,
    .get_enumerated_name = nullptr,
    .read_integer = readValues,
    .read_integer64 = nullptr,
    .read_enumerated = nullptr,
    .read_bytes = nullptr,
    .read_iec958 = nullptr,
    .write_integer = writeValues,
    .write_integer64 = nullptr,
    .write_enumerated = nullptr,
    .write_bytes = nullptr,
    .write_iec958 = nullptr,
    .subscribe_events = nullptr,
    .read_event = noEvent,
    .poll_descriptors_count = nullptr,
    .poll_descriptors = nullptr,
    .poll_revents = nullptr,
};

bool isCard(const Card& card, snd_config_t* configuration)
{
    snd_config_t* entry = nullptr;
    const char* given = nullptr;
    return snd_config_search(configuration, card.key, &entry) >= 0 &&
           snd_config_get_string(entry, &given) >= 0 && std::strcmp(given, card.value) == 0;
}

/// The card that the ALSA configuration means, with the slot of its first element; null for an
/// unknown one.
const Card* findCard(snd_config_t* configuration, int& firstSlot)
{
    firstSlot = 0;
    for (const Card& card : kCards) {
        if (isCard(card, configuration))
            return &card;
        firstSlot += static_cast<int>(card.elements.size());
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
    handle->card = findCard(configuration, handle->firstSlot);
    if (handle->card == nullptr)
        return -ENOENT;
    int status = faultAt(FaultPoint::CardOpen, "open", "", handle->name);
    if (status >= 0)
        status = CardState::instance().open();
    if (status < 0)
        return status;

    snd_ctl_ext_t& ext = handle->ext;
    ext.version = SND_CTL_EXT_VERSION;
    ext.card_idx = static_cast<int>(handle->card - kCards);
    fill(ext.id, "kepvirtual");
    fill(ext.driver, "kepvirtual");
    fill(ext.name, handle->card->title);
    fill(ext.longname, handle->card->title);
    fill(ext.mixername, handle->card->title);
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
