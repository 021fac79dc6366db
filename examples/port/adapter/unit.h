// SPDX-License-Identifier: Apache-2.0
// A unit of the maker's library, with statuses as the platform's headers have them: 0 for success.
#pragma once

#include <string>

#include "mwlparams.h"
#include "veltoraaudio.h"

namespace veltora
{

class Unit
{
public:
    explicit Unit(const char* name) : mUnit(vlt_open(name)) {}

    int set(const char* property, long value) const;
    int set(const char* property, const std::string& value) const;
    int set(const char* property, const int* values, int count) const;
    int perform(const char* command) const;
    /// "" when there is none.
    [[nodiscard]] std::string text(const char* property) const;

    /// The maker has no tables of parameters: each is a property of its own.
    int setAll(const char* prefix, const MwlParams& parameters) const;

private:
    vlt_unit* mUnit;
};

/// The platform's volumes go from 0 to 255, the maker's from 0 to 100.
long volumeOf(int volume);

} // namespace veltora
