// SPDX-License-Identifier: Apache-2.0
// The input line of the headphone, and the sub-microcontroller.
#include <cstdint>

#include "answers.h"
#include "checks.h"
#include "hwiogpio.h"
#include "subcpu.h"

namespace
{

constexpr const char* kHeadphoneLine = "GPIO_RD_HP_LINK";
constexpr const char* kHeadphoneMute = "subcpu_misc_Set_HPMuteOnOff";
constexpr std::uint8_t kNoLevel = 0xA5;

std::string lineFault(unsigned int limitMs)
{
    std::uint8_t level = kNoLevel;
    std::string fault = answerFault(kHeadphoneLine, limitMs, [&level] {
        return HWIO_GPIO_ReadInputPort(kHeadphoneLine, &level);
    });
    if (fault.empty() && level == kNoLevel)
        fault = std::string{kHeadphoneLine} + " was read without a level being filled in";
    return fault;
}

} // namespace

void checkLines(Report& report, const Conditions& conditions)
{
    report.begin("GPIO and sub-microcontroller");
    report.tell(std::string{kHeadphoneLine} + " can be read", lineFault(conditions.limitMs));
    const std::string claim = std::string{kHeadphoneMute} + " answers";
    if (!conditions.audible)
        return report.skip(claim, kCouldBeHeard);
    std::string fault;
    for (const bool mute : {true, false})
        if (fault.empty())
            fault = answerFault(kHeadphoneMute, conditions.limitMs,
                                [mute] { return subcpu_misc_Set_HPMuteOnOff(mute); });
    report.tell(claim, fault);
}
