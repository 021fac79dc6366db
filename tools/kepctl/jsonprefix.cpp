// SPDX-License-Identifier: Apache-2.0
// The beginning of a JSON text. It is taken as it comes: whether it is any good is checked when it
// is whole.
#include "jsonprefix.h"

#include <algorithm>
#include <utility>

namespace
{

class Scanner
{
public:
    explicit Scanner(const std::string& text) : mText(text) {}

    JsonPrefix scan()
    {
        while (mPlace < mText.size())
            step();
        mPrefix.next = mPrefix.levels.empty() ? mRootNext : mPrefix.levels.back().next;
        return std::move(mPrefix);
    }

private:
    JsonNext& next() { return mPrefix.levels.empty() ? mRootNext : mPrefix.levels.back().next; }

    void step()
    {
        switch (mText[mPlace]) {
        case '{':
        case '[':
            return open(mText[mPlace++] == '[');
        case '}':
        case ']':
            ++mPlace;
            if (!mPrefix.levels.empty())
                mPrefix.levels.pop_back();
            next() = JsonNext::End;
            return;
        case ',':
            ++mPlace;
            return separate();
        case ':':
            ++mPlace;
            next() = JsonNext::Value;
            return;
        case ' ':
        case '\t':
            ++mPlace;
            return;
        default:
            return token();
        }
    }

    void open(bool array)
    {
        JsonLevel level;
        level.array = array;
        level.next = array ? JsonNext::Value : JsonNext::Key;
        mPrefix.levels.push_back(level);
    }

    void separate()
    {
        if (mPrefix.levels.empty())
            return;
        JsonLevel& level = mPrefix.levels.back();
        level.next = level.array ? JsonNext::Value : JsonNext::Key;
        if (!level.array)
            return;
        ++level.index;
        level.elements.resize(level.index);
    }

    /// A string, a number or a word; the partial one when the text ends in it.
    void token()
    {
        const std::size_t begin = mPlace;
        const bool quoted = mText[begin] == '"';
        std::size_t end = quoted ? begin + 1 : mText.find_first_of(" \t,:]}", begin);
        if (quoted) {
            while (end < mText.size() && mText[end] != '"')
                end += mText[end] == '\\' ? 2 : 1;
            end = end < mText.size() ? end + 1 : std::string::npos;
        }
        mPlace = std::min(end, mText.size());
        if (end == std::string::npos)
            mPrefix.partial = mText.substr(begin);
        else
            take(quoted ? mText.substr(begin + 1, end - begin - 2) : "");
    }

    void take(const std::string& text)
    {
        const JsonNext taken =
            std::exchange(next(), next() == JsonNext::Key ? JsonNext::Colon : JsonNext::End);
        if (mPrefix.levels.empty())
            return;
        JsonLevel& level = mPrefix.levels.back();
        if (taken == JsonNext::Key) {
            level.key = text;
        } else if (level.array) {
            level.elements.resize(level.index + 1);
            level.elements[level.index] = text;
        } else {
            level.texts[level.key] = text;
        }
    }

    const std::string& mText;
    std::size_t mPlace = 0;
    JsonPrefix mPrefix;
    JsonNext mRootNext = JsonNext::Value;
};

} // namespace

JsonPrefix jsonPrefixOf(const std::string& text)
{
    return Scanner{text}.scan();
}
