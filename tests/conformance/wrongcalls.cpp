// SPDX-License-Identifier: Apache-2.0
#include "wrongcalls.h"

#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>

#include <alsa/asoundlib.h>

#include "mwldelay.h"
#include "platformlog.h"

bool gForgetWrites = false;
bool gNoLevelFilledIn = false;
bool gDropLog = false;
bool gDropPairs = false;
bool gLeaveNoLineOut = false;
bool gLogTwice = false;
bool gOtherLogId = false;
bool gOtherLogText = false;
bool gNoDelay = false;
bool gThrow = false;
int gReadsUntilSlow = -1;

namespace
{

template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

int snd_hctl_elem_write(snd_hctl_elem_t* element, snd_ctl_elem_value_t* value)
{
    return gForgetWrites
               ? 0
               : next<decltype(snd_hctl_elem_write)>("snd_hctl_elem_write")(element, value);
}

int snd_hctl_elem_read(snd_hctl_elem_t* element, snd_ctl_elem_value_t* value)
{
    if (gReadsUntilSlow-- == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds{300});
    return next<decltype(snd_hctl_elem_read)>("snd_hctl_elem_read")(element, value);
}

int HWIO_GPIO_ReadInputPort(const char* line, std::uint8_t* level);
int HWIO_GPIO_ReadInputPort(const char* line, std::uint8_t* level)
{
    return gNoLevelFilledIn
               ? 0
               : next<decltype(HWIO_GPIO_ReadInputPort)>("HWIO_GPIO_ReadInputPort")(line, level);
}

int subcpu_misc_Set_HPMuteOnOff(bool mute);
int subcpu_misc_Set_HPMuteOnOff(bool mute)
{
    if (gThrow)
        throw std::runtime_error{"no such chip"};
    return next<decltype(subcpu_misc_Set_HPMuteOnOff)>("subcpu_misc_Set_HPMuteOnOff")(mute);
}

void LogMsgPrefixed(LogContext* context, int level, const char* id, const LogPair* pairs,
                    std::size_t pairCount, const char* prefix, const char* format,
                    va_list arguments) noexcept
{
    if (gDropLog)
        return;
    if (gLeaveNoLineOut)
        LogSetLevel(context, kLogDebug);
    for (int times = gLogTwice ? 2 : 1; times > 0; --times) {
        va_list again;
        va_copy(again, arguments);
        next<decltype(LogMsgPrefixed)>("LogMsgPrefixed")(
            context, level, gOtherLogId ? "OTHER" : id, pairs, gDropPairs ? 0 : pairCount,
            gOtherLogText ? "otherwise, " : prefix, format, again);
        va_end(again);
    }
}

void LogMsgKV(LogContext* context, int level, const char* id, const LogPair* pairs,
              std::size_t pairCount, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(context, level, id, pairs, pairCount, "", format, arguments);
    va_end(arguments);
}
}

mwl_delay::MWLDelay* mwl_delay::MWLDelay::getInstance()
{
    return gNoDelay ? nullptr : next<MWLDelay*()>("_ZN9mwl_delay8MWLDelay11getInstanceEv")();
}
