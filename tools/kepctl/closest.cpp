// SPDX-License-Identifier: Apache-2.0
// What somebody who mistyped a name most likely meant.
#include "closest.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace
{

constexpr std::size_t kNotClose = SIZE_MAX;
constexpr std::size_t kLongestName = 128; // longer texts are no mistyped names

std::string folded(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// Letters to add, to remove, to change or to swap with their neighbour until `a` is `b`.
std::size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> before;
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[b.size()];
}

/// Whether `part` is `whole` with letters left out, but not most of them.
bool isShortenedFrom(const std::string& part, const std::string& whole)
{
    constexpr std::size_t kShortest = 4;
    if (part.size() < kShortest || part.size() * 3 < whole.size())
        return false;
    std::size_t met = 0;
    for (const char letter : whole)
        if (met < part.size() && part[met] == letter)
            ++met;
    return met == part.size();
}

std::size_t distance(const std::string& word, const std::string& name)
{
    const std::size_t edits = editDistance(word, name);
    const std::size_t bearable = std::max<std::size_t>(1, std::min(word.size(), name.size()) / 3);
    if (edits <= bearable && edits < word.size()) // something has to be right
        return edits;
    return isShortenedFrom(word, name) || isShortenedFrom(name, word) ? edits + bearable
                                                                      : kNotClose;
}

} // namespace

std::string closest(const std::string& word, const Names& names)
{
    if (word.empty() || word.size() > kLongestName)
        return "";
    std::string best;
    std::size_t least = kNotClose;
    for (const std::string& name : names) {
        const std::size_t from = distance(folded(word), folded(name));
        if (from < least) {
            least = from;
            best = name;
        }
    }
    return best;
}

std::string didYouMean(const std::string& word, const Names& names)
{
    const std::string name = closest(word, names);
    return name.empty() ? "" : "did you mean \"" + name + "\"?";
}

std::string anyOf(const Names& names)
{
    std::string all;
    for (std::size_t i = 0; i < names.size(); ++i)
        all += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return all;
}
