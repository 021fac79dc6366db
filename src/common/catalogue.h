// SPDX-License-Identifier: Apache-2.0
// How the catalogue's lists are made of the tables that the library walks: at compile time, a row
// of the list from each row of the table. Each operation of kepCatalogue is defined beside its
// table, or in src/tv/catalogue.cpp.
#pragma once

#include <array>
#include <cstddef>

#include "kepcatalogue.h"

template <typename Element, std::size_t Size>
constexpr kepList<Element> listOf(const Element (&elements)[Size])
{
    return {elements, Size};
}

template <typename Element, std::size_t Size>
constexpr kepList<Element> listOf(const std::array<Element, Size>& elements)
{
    return {elements.data(), Size};
}

/// What `show` makes of each row.
template <typename Row, std::size_t Size, typename Show>
constexpr auto projected(const Row (&rows)[Size], Show show)
{
    std::array<decltype(show(rows[0])), Size> shown{};
    for (std::size_t i = 0; i < Size; ++i)
        shown[i] = show(rows[i]);
    return shown;
}
