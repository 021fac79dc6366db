// SPDX-License-Identifier: Apache-2.0
// The platform's delay library over the maker's unit "lipsync".
#include "mwldelay.h"

#include "unit.h"

namespace mwl_delay
{
namespace
{

const veltora::Unit& unit()
{
    static const veltora::Unit lipsync{"lipsync"};
    return lipsync;
}

} // namespace

MWLDelay* MWLDelay::getInstance()
{
    static MWLDelay instance;
    return &instance;
}

int MWLDelay::registerQualityParams(MwlParams* parameters)
{
    return unit().setAll("quality", *parameters);
}

int MWLDelay::registerAvParams(MwlParams* parameters)
{
    return unit().setAll("av", *parameters);
}

int MWLDelay::setDelayInitialize()
{
    return unit().perform("start");
}

int MWLDelay::setFactoryDelay(int correction)
{
    return unit().set("factory", correction);
}

int MWLDelay::setDelayUpdate()
{
    return unit().perform("apply");
}

int MWLDelay::setOffSetDelay(int value, const std::string& operationType)
{
    return unit().set(("offset." + operationType).c_str(), value);
}

int MWLDelay::setUserDelay(MWL_DELAY_USER_PARAM_LIST_T* settings)
{
    const int values[] = {settings->avSync,        settings->avSyncBypassInput,
                          settings->avSyncSpeaker, settings->avSyncSpdif,
                          settings->avSyncWisa,    settings->avSyncBtSurround};
    return unit().set("user", values, static_cast<int>(std::size(values)));
}

} // namespace mwl_delay
