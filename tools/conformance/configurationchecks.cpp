// SPDX-License-Identifier: Apache-2.0
// The configuration: readable, with the section of this build, naming a backend that there is.
#include "checks.h"

#include "configuration.h"
#include "jdomparser.h"

namespace
{

std::string readingFault()
{
    JDomParser parser{JSchema::acceptAll()};
    const std::string path = configurationPath();
    if (parser.parseFile(path).isObject())
        return "";
    const std::string reason = parser.errorText();
    return path + " is no JSON object that can be read" + (reason.empty() ? "" : ": " + reason);
}

} // namespace

void checkConfiguration(Report& report, const Conditions&)
{
    report.begin("Configuration");
    const std::string fault = readingFault();
    report.tell("kep-config.json can be read", fault);
    if (fault.empty())
        report.tell("kep-config.json names a backend", configurationFault());
    else
        report.skip("kep-config.json names a backend", "the file cannot be read");
}
