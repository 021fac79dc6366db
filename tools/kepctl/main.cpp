// SPDX-License-Identifier: Apache-2.0
// kepctl: plays request scripts against the library and shows what the television would do.
#include "commands.h"

int main(int argc, char** argv)
{
    return runCommand(argc, argv);
}
