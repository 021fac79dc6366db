// SPDX-License-Identifier: Apache-2.0
// libasound's own messages. It repeats them at every access; once is enough.
#include "alsamessages.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <set>
#include <string>

#include <alsa/asoundlib.h>

namespace
{

void tellOnce(const std::string& message)
{
    static std::mutex guard;                             // the start-up thread opens cards, too
    static auto* const told = new std::set<std::string>; // never destroyed: cards are used at exit
    const std::lock_guard lock{guard};
    if (told->insert(message).second)
        std::cerr << "    libasound: " + message + "\n";
}

[[gnu::format(printf, 5, 6)]] void show(const char*, int, const char* function, int error,
                                        const char* format, ...)
{
    std::array<char, 512> text{};
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    tellOnce(std::string{text.data()} +
             (error != 0 ? std::string{": "} + snd_strerror(error) : "") + " (" + function + ")");
}

void ignore(const char*, int, const char*, int, const char*, ...) {}

} // namespace

void handleAlsaMessages(bool shown)
{
    snd_lib_error_set_handler(shown ? &show : &ignore);
}
