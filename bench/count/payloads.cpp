// SPDX-License-Identifier: Apache-2.0
// JSON texts of any size.
#include "payloads.h"

#include <json-c/json.h>

#include "byhand.h"

namespace count
{

using namespace byhand;

std::string objectText(int keys)
{
    std::string text = "{";
    for (int i = 0; i < keys; ++i)
        text += (i != 0 ? "," : "") + std::string{"\"key "} + std::to_string(i) +
                "\":" + std::to_string(i);
    return text + "}";
}

void parseByHand(const std::string& text)
{
    json_tokener* tokener = json_tokener_new();
    json_object* root = json_tokener_parse_ex(tokener, text.data(), static_cast<int>(text.size()));
    require(root != nullptr, "parsing");
    json_object_put(root);
    json_tokener_free(tokener);
}

} // namespace count
