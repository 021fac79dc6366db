// SPDX-License-Identifier: Apache-2.0
// Names what a platform must supply. It is linked, and never run.
#include <cstdarg>

#include "checks.h"
#include "jdomparser.h"
#include "jvalue.h"
#include "platformlog.h"

namespace
{

void json()
{
    JDomParser parser{JSchema::acceptAll()};
    JValue value = parser.parse("{}");
    value = parser.parseFile(parser.errorText());
    value = JValue::object();
    value.put("double", 1.5);
    value.put("text", "text");
    value.put("signed", -1);
    value.put("unsigned", 1U);
    static_cast<void>(value.put(std::string{"key"}, JValue::array()));
    static_cast<void>(value["key"].append(JValue::invalid()));
    const JValue copy = value;
    static_cast<void>(copy == value.deepCopy());
    value.remove("key");
    value.remove(0U);
    std::string text;
    bool flag = value.isBool() || value.isNumber() || value.isString() || value.isArray() ||
                value.isObject() || value.hasKey("key") || value.size() > 0 || value.depth() > 0;
    std::int32_t number = 0;
    std::int64_t large = 0;
    double real = 0;
    flag = value.asString(text) && value.asBool(flag) && value.asNumber(number) &&
           value.asNumber(large) && value.asNumber(real) && value.asBool();
    text = value[0].asString() + value.stringify();
    static_cast<void>(value.members().size() + value.elements().size());
    for (const auto& [key, member] : value.eachMember())
        text += key;
}

void log(const char* format, ...)
{
    LogContext* context = LogGetContext("check");
    LogSetLevel(context, LogGetLevel(context));
    va_list arguments;
    va_start(arguments, format);
    LogMsgPrefixed(context, kLogError, "", nullptr, 0, "", "", arguments);
    va_end(arguments);
}

} // namespace

int main()
{
    json();
    log("");
    Report report{/*tap=*/true};
    for (auto* check : {&checkMiddleware, &checkLines, &checkLog})
        check(report, {});
}
