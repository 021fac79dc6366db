// SPDX-License-Identifier: Apache-2.0
// Settings of n keys, next to json-c parsing the same text.
#include <memory>
#include <string>

#include "byhand.h"
#include "cases.h"
#include "client.h"
#include "jdomparser.h"
#include "payloads.h"

namespace count
{

using namespace byhand;

namespace
{

/// A category that is stored and does nothing else, and one whose keys become parameters.
constexpr const char* kCategories[] = {"dimension", "smartSoundMode"};
constexpr int kKeys[] = {1, 3, 10, 17, 100, 333, 1000, 10000, 100000};

} // namespace

void addSettingsCases(std::vector<Case>& cases)
{
    for (const int keys : kKeys) {
        const auto text = std::make_shared<std::string>();
        const auto payload = std::make_shared<JValue>();
        const auto prepare = [text, payload, keys] {
            startClient("TV");
            *text = objectText(keys);
            *payload = JDomParser{JSchema::acceptAll()}.parse(*text);
        };
        const int times = keys > 1000 ? 1 : 5;
        for (const char* category : kCategories)
            cases.push_back(
                {"settings." + std::string{category} + "." + std::to_string(keys), prepare,
                 [payload, category] {
                     require(kepClient::getInstance()->setSettings(category, *payload) ==
                                 KEP_RESULT_OK,
                             "settings");
                 },
                 times});
        cases.push_back({"settings.parse." + std::to_string(keys) + ".byHand", prepare,
                         [text] { parseByHand(*text); }, times});
    }
}

} // namespace count
