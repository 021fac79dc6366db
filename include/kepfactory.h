// SPDX-License-Identifier: Apache-2.0
// The registry in which the backends enter themselves while the library is being loaded.
#pragma once

#include <map>
#include <string>

#include "kepaudio.h"
#include "kepexport.h"

/// Makes, or hands out, a backend; null when it declines. The factory never owns the result.
using kepAudioCreator = kepAudio* (*)();

/// Backend names and their creators. It takes no lock and logs nothing.
class KEP_EXPORT kepFactory
{
public:
    using Registry = std::map<std::string, kepAudioCreator>;

    /// The one registry of the process; it lives until the process ends.
    static kepFactory* getInstance();
    kepFactory(const kepFactory&) = delete;
    kepFactory& operator=(const kepFactory&) = delete;

    /// Enters a creator; false, with nothing changed, when the name is taken.
    bool Register(const std::string& name, kepAudioCreator creator);
    /// Removes a name; false when it was not entered.
    bool UnRegister(const std::string& name);
    /// The backend of that name; null when the name is unknown or its creator declines.
    kepAudio* createKEPAudioObj(const std::string& name);
    /// A copy of all entries.
    [[nodiscard]] Registry getRegistry() const { return mRegistry; }

private:
    kepFactory() = default;

    Registry mRegistry;
};
