// SPDX-License-Identifier: Apache-2.0
// What this build has settled for its television: the settings KEP_SOC_KEY, KEP_CONFIG_FOLDER and
// KEP_CARD of the build.
#include "kepcatalogue.h"

kepBuild kepCatalogue::build()
{
    return {KEP_SOC_KEY, KEP_CONFIG_FOLDER, KEP_CARD};
}
