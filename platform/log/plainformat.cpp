// SPDX-License-Identifier: Apache-2.0
#include "plainformat.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace
{

/// The room as it fills, with one byte kept for the end of the text.
class Filling
{
public:
    explicit Filling(std::span<char> room) : mAt(room.data()), mEnd(room.data() + room.size() - 1)
    {
    }

    bool append(std::string_view text) noexcept
    {
        if (text.size() > static_cast<std::size_t>(mEnd - mAt))
            return false;
        std::memcpy(mAt, text.data(), text.size());
        mAt += text.size();
        return true;
    }
    template <typename Integer>
    bool append(Integer number) noexcept
    {
        const std::to_chars_result result = std::to_chars(mAt, mEnd, number);
        mAt = result.ptr;
        return result.ec == std::errc{};
    }
    void close() noexcept { *mAt = '\0'; }

private:
    char* mAt;
    char* const mEnd;
};

} // namespace

bool formatPlain(std::span<char> room, const char* format, va_list arguments) noexcept
{
    Filling text{room};
    for (;;) {
        const char* const percent = strchrnul(format, '%');
        if (!text.append({format, percent}))
            return false;
        if (*percent == '\0')
            break;
        bool fits = false;
        switch (percent[1]) {
        case 's': {
            const char* const argument = va_arg(arguments, const char*);
            fits = text.append(argument != nullptr ? argument : std::string_view{"(null)"});
            break;
        }
        case 'd':
            fits = text.append(va_arg(arguments, int));
            break;
        case 'u':
            fits = text.append(va_arg(arguments, unsigned int));
            break;
        default: // somebody else's
            break;
        }
        if (!fits)
            return false;
        format = percent + 2;
    }
    text.close();
    return true;
}
