// SPDX-License-Identifier: Apache-2.0
// Where the program lies; what belongs to it lies beside it. As the kernel told the program: /proc
// is missing in early boot and in some containers.
#include "programfolder.h"

#include <system_error>

#include <sys/auxv.h>

std::filesystem::path programFolder()
{
    const auto* const file = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    std::error_code error;
    return file == nullptr ? "" : std::filesystem::canonical(file, error).parent_path();
}
