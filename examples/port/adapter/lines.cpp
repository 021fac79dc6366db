// SPDX-License-Identifier: Apache-2.0
// Input lines and the headphone's mute. The maker numbers its lines; the library knows one by name.
#include <cstring>

#include "hwiogpio.h"
#include "subcpu.h"
#include "veltoraaudio.h"

namespace
{

constexpr const char* kHeadphoneLine = "GPIO_RD_HP_LINK";
constexpr int kHeadphoneSocket = 7;

} // namespace

int HWIO_GPIO_ReadInputPort(const char* line, std::uint8_t* level)
{
    if (std::strcmp(line, kHeadphoneLine) != 0)
        return 1;
    const int read = vlt_line(kHeadphoneSocket);
    *level = read > 0 ? 1 : 0;
    return read < 0 ? 1 : 0;
}

int subcpu_misc_Set_HPMuteOnOff(bool mute)
{
    return vlt_headphone_power(mute ? 0 : 1) == VLT_DONE ? 0 : 1;
}
