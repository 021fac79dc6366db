// SPDX-License-Identifier: Apache-2.0
// JSON values next to bare json-c: parsing, printing, a walk, a look-up, building.
#include <memory>
#include <string>

#include <json-c/json.h>

#include "byhand.h"
#include "cases.h"
#include "jdomparser.h"
#include "payloads.h"

namespace count
{

using namespace byhand;

namespace
{

constexpr int kTextFlags = JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE;

volatile std::size_t gKept; // what is computed must not be left out

} // namespace

void addJsonCases(std::vector<Case>& cases)
{
    const std::string text = objectText(100);
    const auto value = std::make_shared<JValue>(JDomParser{JSchema::acceptAll()}.parse(text));
    json_object* node = json_tokener_parse(text.c_str()); // kept

    cases.push_back({"json.parse", {}, [text] {
                         JDomParser parser{JSchema::acceptAll()};
                         require(parser.parse(text).isObject(), "parsing");
                     }});
    cases.push_back({"json.parse.byHand", {}, [text] { parseByHand(text); }});

    cases.push_back({"json.walk", {}, [value] {
                         std::size_t sum = 0;
                         for (const auto& [key, member] : value->eachMember())
                             sum += key.size() + (member.isNumber() ? 1 : 0);
                         gKept = sum;
                     }});
    cases.push_back({"json.members", {}, [value] {
                         std::size_t sum = 0;
                         for (const auto& [key, member] : value->members())
                             sum += key.size() + (member.isNumber() ? 1 : 0);
                         gKept = sum;
                     }});
    cases.push_back({"json.walk.byHand", {}, [node] {
                         std::size_t sum = 0;
                         json_object_object_foreach(node, key, member)
                         {
                             sum += std::string_view{key}.size() +
                                    (json_object_is_type(member, json_type_int) != 0 ? 1 : 0);
                         }
                         gKept = sum;
                     }});

    cases.push_back({"json.lookup", {}, [value] {
                         gKept =
                             static_cast<std::size_t>((*value)["key 50"].asNumber<std::int32_t>());
                     }});
    cases.push_back({"json.lookup.byHand", {}, [node] {
                         json_object* member = nullptr;
                         json_object_object_get_ex(node, "key 50", &member);
                         gKept = static_cast<std::size_t>(json_object_get_int(member));
                     }});

    cases.push_back({"json.stringify", {}, [value] { gKept = value->stringify().size(); }});
    cases.push_back(
        {"json.stringify.byHand", {}, [node] {
             gKept = std::string_view{json_object_to_json_string_ext(node, kTextFlags)}.size();
         }});

    cases.push_back({"json.build", {}, [] {
                         JValue object = JValue::object();
                         object.put("category", "sound");
                         object.put("volume", 20);
                         object.put("muted", false);
                         gKept = object.size();
                     }});
    cases.push_back({"json.build.byHand", {}, [] {
                         json_object* object = json_object_new_object();
                         json_object_object_add(object, "category",
                                                json_object_new_string("sound"));
                         json_object_object_add(object, "volume", json_object_new_int64(20));
                         json_object_object_add(object, "muted", json_object_new_boolean(0));
                         gKept = static_cast<std::size_t>(json_object_object_length(object));
                         json_object_put(object);
                     }});
}

} // namespace count
