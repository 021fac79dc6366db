// SPDX-License-Identifier: Apache-2.0
// The registry of backends. It is filled by static initialisers, so it must exist at its first use.
#include "kepfactory.h"

kepFactory* kepFactory::getInstance()
{
    static kepFactory instance;
    return &instance;
}

bool kepFactory::Register(const std::string& name, kepAudioCreator creator)
{
    return mRegistry.emplace(name, creator).second;
}

bool kepFactory::UnRegister(const std::string& name)
{
    return mRegistry.erase(name) != 0;
}

kepAudio* kepFactory::createKEPAudioObj(const std::string& name)
{
    const auto entry = mRegistry.find(name);
    return entry != mRegistry.end() ? entry->second() : nullptr;
}
