// SPDX-License-Identifier: Apache-2.0
// JSON values over json-c, whose null is a null pointer and whose keys are C strings.
// json-c frees and prints by recursion, so no document may grow deeper than JValue::kMaxDepth.
#include "jvalue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>

#include <json-c/json.h>

namespace
{

constexpr int kTextFlags = JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE;

json_object* orThrow(json_object* node)
{
    if (node == nullptr)
        throw std::bad_alloc{};
    return node;
}

bool isOfType(const json_object* node, json_type type) noexcept
{
    return node != nullptr && json_object_is_type(node, type) != 0;
}

bool holdsNul(const std::string& key) noexcept
{
    return key.find('\0') != std::string::npos;
}

/// How many containers stand inside one another in `node`, itself included; 0 for a scalar.
int depthOf(json_object* node) noexcept
{
    int inner = 0;
    if (isOfType(node, json_type_object)) {
        json_object_object_foreach(node, key, member)
        {
            static_cast<void>(key);
            inner = std::max(inner, depthOf(member));
        }
        return inner + 1;
    }
    if (isOfType(node, json_type_array)) {
        for (std::size_t i = 0; i < json_object_array_length(node); ++i)
            inner = std::max(inner, depthOf(json_object_array_get_idx(node, i)));
        return inner + 1;
    }
    return 0;
}

/// The JSON text of an integer, or of a string without anything to escape. json-c would make a
/// buffer for it, which stays in the node.
bool isPlainScalar(json_object* node, std::string& text)
{
    if (isOfType(node, json_type_int)) {
        const std::int64_t number = json_object_get_int64(node);
        if (number == std::numeric_limits<std::int64_t>::max()) // it may be larger
            return false;
        text = std::to_string(number);
        return true;
    }
    if (!isOfType(node, json_type_string))
        return false;
    const std::string_view content{json_object_get_string(node),
                                   static_cast<std::size_t>(json_object_get_string_len(node))};
    if (std::any_of(content.begin(), content.end(), [](char c) {
            return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\';
        }))
        return false;
    text.reserve(content.size() + 2);
    text.append(1, '"').append(content).append(1, '"');
    return true;
}

/// The nearest integer toward zero that fits. A NaN cannot occur: neither the parser nor JValue
/// admits it.
template <typename Integer>
Integer saturate(double number) noexcept
{
    using Limits = std::numeric_limits<Integer>;
    if (number >= static_cast<double>(Limits::max()))
        return Limits::max();
    if (number <= static_cast<double>(Limits::min()))
        return Limits::min();
    return static_cast<Integer>(number);
}

} // namespace

JValue::JValue(double value)
{
    if (!std::isfinite(value))
        return;
    // The shortest text that reads back as the same number; json-c's own would show 0.1 with 17
    // digits.
    std::array<char, 32> text{};
    std::to_chars(text.data(), text.data() + text.size() - 1, value);
    mNode = orThrow(json_object_new_double_s(value, text.data()));
}

JValue::JValue(std::string_view text)
    : mNode(orThrow(json_object_new_string_len(text.data(), static_cast<int>(text.size()))))
{
}

JValue JValue::ofSigned(std::int64_t value)
{
    return {orThrow(json_object_new_int64(value)), 1};
}

JValue JValue::ofUnsigned(std::uint64_t value)
{
    return {orThrow(json_object_new_uint64(value)), 1};
}

JValue JValue::object()
{
    return {orThrow(json_object_new_object()), 1};
}

JValue JValue::array()
{
    return {orThrow(json_object_new_array()), 1};
}

JValue JValue::invalid() noexcept
{
    JValue value;
    value.mKind = Kind::Invalid;
    return value;
}

JValue::JValue(const JValue& other) noexcept
    : mNode(json_object_get(other.mNode)), mLevel(other.mLevel), mKind(other.mKind)
{
}

JValue& JValue::operator=(JValue other) noexcept
{
    std::swap(mNode, other.mNode);
    mLevel = other.mLevel;
    mKind = other.mKind;
    return *this;
}

void JValue::drop() noexcept
{
    json_object_put(mNode);
}

bool JValue::isBool() const noexcept
{
    return mKind == Kind::False || mKind == Kind::True || isOfType(mNode, json_type_boolean);
}

bool JValue::isNumber() const noexcept
{
    const json_type type = json_object_get_type(mNode);
    return type == json_type_int || type == json_type_double;
}

bool JValue::isString() const noexcept
{
    return isOfType(mNode, json_type_string);
}

bool JValue::isArray() const noexcept
{
    return isOfType(mNode, json_type_array);
}

bool JValue::isObject() const noexcept
{
    return isOfType(mNode, json_type_object);
}

bool JValue::asString(std::string& text) const
{
    if (!isString()) {
        text.clear();
        return false;
    }
    text.assign(json_object_get_string(mNode),
                static_cast<std::size_t>(json_object_get_string_len(mNode)));
    return true;
}

bool JValue::asBool(bool& value) const noexcept
{
    value = mKind == Kind::True || (isBool() && json_object_get_boolean(mNode) != 0);
    return isBool();
}

bool JValue::asNumber(std::int32_t& number) const noexcept
{
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t wide = 0;
    const bool converted = asNumber(wide);
    number =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(wide, Limits::min(), Limits::max()));
    return converted;
}

bool JValue::asNumber(std::int64_t& number) const noexcept
{
    number = 0;
    if (isOfType(mNode, json_type_double))
        number = saturate<std::int64_t>(json_object_get_double(mNode));
    else if (isOfType(mNode, json_type_int))
        number = json_object_get_int64(mNode);
    return isNumber();
}

bool JValue::asNumber(double& number) const noexcept
{
    using Limits = std::numeric_limits<double>;
    const double exact = isNumber() ? json_object_get_double(mNode) : 0.0;
    number = std::clamp(exact, Limits::lowest(), Limits::max()); // a text such as 1e400 is infinite
    return isNumber();
}

std::string JValue::asString() const
{
    std::string text;
    asString(text);
    return text;
}

bool JValue::asBool() const noexcept
{
    bool value = false;
    asBool(value);
    return value;
}

std::size_t JValue::size() const noexcept
{
    if (isObject())
        return static_cast<std::size_t>(json_object_object_length(mNode));
    return isArray() ? json_object_array_length(mNode) : 0;
}

bool JValue::hasKey(const std::string& key) const noexcept
{
    return (*this)[key].isValid();
}

JValue JValue::operator[](const std::string& key) const noexcept
{
    return holdsNul(key) ? invalid() : (*this)[key.c_str()];
}

JValue JValue::operator[](const char* key) const noexcept
{
    json_object* member = nullptr;
    if (!isObject() || json_object_object_get_ex(mNode, key, &member) == 0)
        return invalid();
    return {json_object_get(member), mLevel + 1};
}

JValue JValue::element(std::size_t index) const noexcept
{
    if (!isArray() || index >= json_object_array_length(mNode))
        return invalid();
    return {json_object_get(json_object_array_get_idx(mNode, index)), mLevel + 1};
}

std::vector<JValue::Member> JValue::members() const
{
    std::vector<Member> all;
    if (!isObject())
        return all;
    all.reserve(size());
    json_object_object_foreach(mNode, key, member)
    {
        all.emplace_back(key, JValue{json_object_get(member), mLevel + 1});
    }
    return all;
}

std::vector<JValue> JValue::elements() const
{
    std::vector<JValue> all;
    if (!isArray())
        return all;
    all.reserve(size());
    for (std::size_t i = 0; i < size(); ++i)
        all.push_back(element(i));
    return all;
}

bool JValue::fitsInside(const JValue& value) const noexcept
{
    return value.isValid() && mLevel + value.depth() <= kMaxDepth;
}

json_object* JValue::copyOfNode() const
{
    if (mKind == Kind::False || mKind == Kind::True)
        return orThrow(json_object_new_boolean(mKind == Kind::True ? 1 : 0));
    json_object* copy = nullptr;
    if (mNode != nullptr && json_object_deep_copy(mNode, &copy, nullptr) != 0)
        throw std::bad_alloc{};
    return copy;
}

bool JValue::put(const std::string& key, const JValue& value)
{
    if (!isObject() || holdsNul(key) || !fitsInside(value))
        return false;
    json_object* copy = value.copyOfNode();
    if (json_object_object_add(mNode, key.c_str(), copy) != 0) {
        json_object_put(copy);
        throw std::bad_alloc{};
    }
    return true;
}

json_object* JValue::takeNode()
{
    return isBool() ? copyOfNode() : std::exchange(mNode, nullptr);
}

bool JValue::putOwn(const char* key, JValue scalar)
{
    if (!isObject())
        return false;
    json_object* node = scalar.takeNode();
    if (json_object_object_add(mNode, key, node) != 0) {
        json_object_put(node);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::appendOwn(JValue scalar)
{
    if (!isArray())
        return false;
    json_object* node = scalar.takeNode();
    if (json_object_array_add(mNode, node) != 0) {
        json_object_put(node);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::append(const JValue& value)
{
    if (!isArray() || !fitsInside(value))
        return false;
    json_object* copy = value.copyOfNode();
    if (json_object_array_add(mNode, copy) != 0) {
        json_object_put(copy);
        throw std::bad_alloc{};
    }
    return true;
}

bool JValue::remove(const std::string& key)
{
    if (!hasKey(key))
        return false;
    json_object_object_del(mNode, key.c_str());
    return true;
}

bool JValue::remove(std::size_t index)
{
    return isArray() && index < size() && json_object_array_del_idx(mNode, index, 1) == 0;
}

std::string JValue::stringify() const
{
    if (mKind == Kind::False || mKind == Kind::True)
        return mKind == Kind::True ? "true" : "false";
    std::string plain;
    if (isPlainScalar(mNode, plain))
        return plain;
    std::size_t length = 0;
    const char* text = json_object_to_json_string_length(mNode, kTextFlags, &length);
    return text != nullptr ? std::string{text, length} : throw std::bad_alloc{};
}

int JValue::depth() const noexcept
{
    return depthOf(mNode);
}

JValue JValue::deepCopy() const
{
    return isValid() ? JValue{copyOfNode(), 1} : invalid();
}

bool JValue::operator==(const JValue& other) const noexcept
{
    if (isBool() && other.isBool())
        return asBool() == other.asBool();
    return isValid() == other.isValid() && !isBool() && !other.isBool() &&
           json_object_equal(mNode, other.mNode) != 0;
}
