// SPDX-License-Identifier: Apache-2.0
// Cases whose cost is counted: what the library does, and the same by hand with the libraries below
// it. They are chosen by name; budgets.tsv says which are compared.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace count
{

struct Case {
    std::string name;
    std::function<void()> prepare; // not counted; "by hand" needs none
    std::function<void()> run;
    int times = 10;    // run so often; the cost of one is reported
    bool cold = false; // in a process of its own, and not run before
};

/// All cases of one subject.
void addDriverCases(std::vector<Case>& cases);
void addJsonCases(std::vector<Case>& cases);
void addLogCases(std::vector<Case>& cases);
void addQualityCases(std::vector<Case>& cases);
void addRequestCases(std::vector<Case>& cases);
void addSettingsCases(std::vector<Case>& cases);
void addStartCases(std::vector<Case>& cases);

} // namespace count
