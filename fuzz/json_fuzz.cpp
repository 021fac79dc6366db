// SPDX-License-Identifier: Apache-2.0
// Any text is either refused with a reason, or parsed into a value whose text parses to the same
// text.
#include <cstdint>
#include <cstdlib>

#include "jdomparser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    JDomParser parser{JSchema::acceptAll()};
    const JValue value = parser.parse({reinterpret_cast<const char*>(data), size});
    if (value.isValid() != parser.errorText().empty())
        std::abort();
    if (!value.isValid())
        return 0;
    const std::string text = value.stringify();
    if (parser.parse(text).stringify() != text || value.deepCopy().stringify() != text)
        std::abort();
    return 0;
}
