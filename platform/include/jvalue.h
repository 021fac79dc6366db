// SPDX-License-Identifier: Apache-2.0
// JSON values: the form in which requests, settings and answers cross the library's interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platformexport.h"

struct json_object;
struct lh_entry;

/// A handle on one value of a JSON document.
///
/// Copies share one document: what is put through one handle is seen through all. A value reached
/// by key or index stays alive, and stays connected to its document, after the handle that it came
/// from is gone. `put` and `append` store a deep copy, so a document is always a tree.
///
/// Nothing here throws but std::bad_alloc. A document belongs to one thread at a time: reference
/// counts are not atomic, and `stringify` keeps its text inside the node.
class KEP_PLATFORM_EXPORT JValue
{
public:
    /// Containers that may stand inside one another, the outermost included. More than the parser
    /// lets in: what was parsed can be put into an answer, a message or a list of them.
    static constexpr int kMaxDepth = 72;

    using Member = std::pair<std::string, JValue>;
    class Walk;

    template <typename Type>
    static constexpr bool kIsScalar =
        std::is_arithmetic_v<Type> || std::is_convertible_v<const Type&, std::string_view>;

    // --- Making values

    /// The null value.
    JValue() noexcept = default;
    /// Needs no memory.
    JValue(bool value) noexcept : mKind(value ? Kind::True : Kind::False) {}
    /// A number that is not finite becomes null.
    JValue(double value);
    /// `text` is UTF-8 and may hold NUL characters.
    JValue(std::string_view text);
    JValue(const std::string& text) : JValue(std::string_view{text}) {}
    JValue(const char* text) : JValue(std::string_view{text}) {}
    template <
        typename Integer,
        std::enable_if_t<std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>, int> = 0>
    JValue(Integer value)
        : JValue(std::is_signed_v<Integer> ? ofSigned(static_cast<std::int64_t>(value))
                                           : ofUnsigned(static_cast<std::uint64_t>(value)))
    {
    }
    JValue(const void*) = delete; // a stray pointer is no bool

    static JValue object();
    static JValue array();
    /// The value of a key or an index that does not exist.
    static JValue invalid() noexcept;

    JValue(const JValue& other) noexcept;
    JValue(JValue&& other) noexcept
        : mNode(std::exchange(other.mNode, nullptr)), mLevel(other.mLevel),
          mKind(std::exchange(other.mKind, Kind::Null))
    {
    }
    JValue& operator=(JValue other) noexcept;
    ~JValue()
    {
        if (mNode != nullptr)
            drop();
    }

    // --- Type. Exactly one of the is... answers is true for a valid value, none for an invalid
    // one.

    [[nodiscard]] bool isValid() const noexcept { return mKind != Kind::Invalid; }
    [[nodiscard]] bool isNull() const noexcept { return mKind == Kind::Null; }
    [[nodiscard]] bool isBool() const noexcept
    {
        return mKind == Kind::False || mKind == Kind::True;
    }
    [[nodiscard]] bool isNumber() const noexcept
    {
        return mKind == Kind::Integer || mKind == Kind::Double;
    }
    [[nodiscard]] bool isString() const noexcept { return mKind == Kind::String; }
    [[nodiscard]] bool isArray() const noexcept { return mKind == Kind::Array; }
    [[nodiscard]] bool isObject() const noexcept { return mKind == Kind::Object; }

    // --- Conversion. The first form answers whether the value was of that type; where it was not,
    // the argument becomes "", false or 0. A number out of range becomes the nearest that fits; for
    // an integer, its fraction is cut toward zero.

    bool asString(std::string& text) const;
    bool asBool(bool& value) const noexcept;
    bool asNumber(std::int32_t& number) const noexcept;
    bool asNumber(std::int64_t& number) const noexcept;
    bool asNumber(double& number) const noexcept;

    [[nodiscard]] std::string asString() const;
    [[nodiscard]] bool asBool() const noexcept;
    template <typename Number>
    [[nodiscard]] Number asNumber() const noexcept
    {
        Number number{};
        asNumber(number);
        return number;
    }

    // --- Members of an object, elements of an array

    /// Members of an object or elements of an array; 0 for every other value.
    [[nodiscard]] std::size_t size() const noexcept;
    /// False, too, for a value that is no object.
    [[nodiscard]] bool hasKey(const std::string& key) const noexcept;
    [[nodiscard]] bool hasKey(const char* key) const noexcept;
    /// Invalid when there is no such member, or this is no object.
    JValue operator[](const std::string& key) const noexcept;
    JValue operator[](const char* key) const noexcept;
    /// Invalid when there is no such element, or this is no array.
    template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    JValue operator[](Integer index) const noexcept
    {
        return index < 0 ? invalid() : element(static_cast<std::size_t>(index));
    }

    /// The members in insertion order; empty for a value that is no object. A snapshot: changing
    /// the object while walking it is allowed.
    [[nodiscard]] std::vector<Member> members() const;
    /// The elements in order; empty for a value that is no array. A snapshot likewise.
    [[nodiscard]] std::vector<JValue> elements() const;
    /// The members in insertion order for a loop, without a copy of any; none for a value that is
    /// no object. The object must not be changed before the loop is over.
    ///     for (const auto& [key, value] : object.eachMember())
    [[nodiscard]] Walk eachMember() const noexcept;

    // --- Change. False, with nothing changed, when this is not of the right type, when `value` is
    // invalid, when the key holds a NUL character or when the document would become too deep.

    /// Sets a member; a key that exists keeps its place.
    [[nodiscard]] bool put(const std::string& key, const JValue& value);
    [[nodiscard]] bool append(const JValue& value);
    /// The same for numbers, bools and texts: an object refuses none of them under a literal key,
    /// an array none at all.
    template <std::size_t Size, typename Scalar, std::enable_if_t<kIsScalar<Scalar>, int> = 0>
    bool put(const char (&key)[Size], const Scalar& value)
    {
        return putOwn(static_cast<const char*>(key), JValue{value});
    }
    template <typename Scalar, std::enable_if_t<kIsScalar<Scalar>, int> = 0>
    bool append(const Scalar& value)
    {
        return appendOwn(JValue{value});
    }
    /// False when there was nothing to remove.
    bool remove(const std::string& key);
    bool remove(std::size_t index);

    // --- The whole value

    /// The JSON text: compact, members in insertion order, "/" not escaped, UTF-8 as it is; "null"
    /// for an invalid value. Parsed numbers stand as they were written (1.50, 1e2), but integers
    /// beyond 64 bits as the nearest that fits.
    [[nodiscard]] std::string stringify() const;
    /// Containers that stand inside one another in this value, itself included; 0 for a scalar.
    [[nodiscard]] int depth() const noexcept;
    /// An equal value that shares nothing with this one.
    [[nodiscard]] JValue deepCopy() const;
    /// Equal type and content, members in any order. The numbers 1 and 1.0 differ.
    [[nodiscard]] bool operator==(const JValue& other) const noexcept;
    [[nodiscard]] bool operator!=(const JValue& other) const noexcept { return !(*this == other); }

private:
    friend class JDomParser;

    enum class Kind : std::uint8_t {
        Invalid,
        Null,
        False,
        True,
        Integer,
        Double,
        String,
        Array,
        Object
    };

    JValue(json_object* owned, int level) noexcept;
    static Kind kindOf(const json_object* node) noexcept;
    static JValue ofSigned(std::int64_t value);
    static JValue ofUnsigned(std::uint64_t value);
    [[nodiscard]] JValue element(std::size_t index) const noexcept;
    [[nodiscard]] bool fitsInside(const JValue& value) const noexcept;
    /// A copy that the caller owns; null for null.
    [[nodiscard]] json_object* copyOfNode() const;
    /// Of a scalar that nobody else holds: its node, from now on the caller's.
    [[nodiscard]] json_object* takeNode();
    bool putOwn(const char* key, JValue scalar);
    bool appendOwn(JValue scalar);
    void drop() noexcept;

    // One reference is ours. Null is no node, nor is a bool that was not read from a document.
    json_object* mNode = nullptr;
    int mLevel = 1;          // containers from the document's root down to this value, if it is one
    Kind mKind = Kind::Null; // a node never changes its own
};

/// A walk over the members of an object, and where it stands.
class KEP_PLATFORM_EXPORT JValue::Walk
{
public:
    /// The member at hand, which the walk lends until its next step; a copy of the value may stay.
    struct Lent {
        std::string_view key;
        JValue value;
    };
    struct End {
    };
    class Iterator
    {
    public:
        explicit Iterator(Walk& walk) noexcept : mWalk(walk) {}
        const Lent& operator*() const noexcept { return mWalk.mLent; }
        void operator++() noexcept { mWalk.goOn(); }
        bool operator!=(End) const noexcept { return mWalk.mEntry != nullptr; }

    private:
        Walk& mWalk;
    };

    explicit Walk(JValue object) noexcept;
    ~Walk() { mLent.value.mNode = nullptr; }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    Iterator begin() noexcept { return Iterator{*this}; }
    End end() const noexcept { return {}; }

private:
    void goOn() noexcept;
    void lend() noexcept;

    JValue mObject; // is there as long as the walk
    const lh_entry* mEntry = nullptr;
    Lent mLent;
};
