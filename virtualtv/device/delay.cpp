// SPDX-License-Identifier: Apache-2.0
// Stands for the delay library.
#include "mwldelay.h"

#include "answer.h"

static JValue toJson(const MWL_DELAY_USER_PARAM_LIST_T& list)
{
    JValue object = JValue::object();
    object.put("avSync", list.avSync);
    object.put("avSyncBypassInput", list.avSyncBypassInput);
    object.put("avSyncSpeaker", list.avSyncSpeaker);
    object.put("avSyncSpdif", list.avSyncSpdif);
    object.put("avSyncWisa", list.avSyncWisa);
    object.put("avSyncBtSurround", list.avSyncBtSurround);
    return object;
}

using virtualtv::answer;

namespace mwl_delay
{

MWLDelay* MWLDelay::getInstance()
{
    static MWLDelay instance;
    return &instance;
}

int MWLDelay::registerQualityParams(MwlParams* parameters)
{
    return answer("delay.registerQualityParams", *parameters);
}

int MWLDelay::registerAvParams(MwlParams* parameters)
{
    return answer("delay.registerAvParams", *parameters);
}

int MWLDelay::setDelayInitialize()
{
    return answer("delay.setDelayInitialize");
}

int MWLDelay::setFactoryDelay(int correction)
{
    return answer("delay.setFactoryDelay", correction);
}

int MWLDelay::setDelayUpdate()
{
    return answer("delay.setDelayUpdate");
}

int MWLDelay::setOffSetDelay(int value, const std::string& operationType)
{
    return answer("delay.setOffSetDelay", value, operationType);
}

int MWLDelay::setUserDelay(MWL_DELAY_USER_PARAM_LIST_T* settings)
{
    return answer("delay.setUserDelay", *settings);
}

} // namespace mwl_delay
