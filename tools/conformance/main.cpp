// SPDX-License-Identifier: Apache-2.0
// kep-conformance: loads the checks, and with them the library and the television's libraries, all
// of whose names are looked up now. It is linked with none of them: an operation that is missing
// would otherwise end the program before it could say so.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <cxxabi.h>
#include <dlfcn.h>

#include "conformance.h"
#include "programfolder.h"

namespace
{

constexpr int kFailed = 1;
constexpr const char* kUndefined = "undefined symbol: ";

/// The module's file, from the folder of the program: as installed, or as built.
std::string moduleFile()
{
    for (const char* folder : {KEP_LIBDIR_FROM_BINDIR, "../lib"}) {
        const std::filesystem::path file = programFolder() / folder / "kep" / "conformance.so";
        std::error_code error;
        if (std::filesystem::exists(file, error))
            return file;
    }
    return "conformance.so";
}

std::string demangled(const std::string& symbol)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name{
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), &std::free};
    return status == 0 ? name.get() : symbol;
}

/// What the loader said, as a sentence: "FILE: undefined symbol: NAME" tells who misses what.
std::string loadingFault()
{
    const char* said = dlerror();
    const std::string message = said != nullptr ? said : "unknown reason";
    const std::size_t at = message.find(kUndefined);
    if (at == std::string::npos)
        return message;
    const std::string symbol = message.substr(at + std::strlen(kUndefined));
    const std::string user = message.substr(0, message.find(':'));
    return std::filesystem::path{user}.filename().string() + " needs " +
           demangled(symbol.substr(0, symbol.find_first_of(" ,\t(\n"))) +
           ", which none of the television's libraries has";
}

int report(const std::string& fault, bool tap)
{
    if (tap)
        std::printf("TAP version 13\n# %s\nnot ok 1 - %s\n# %s\n1..1\n", kLibrariesSubject,
                    kLibrariesClaim, fault.c_str());
    else
        std::printf("%s\n  FAIL  %s:\n        %s\n\n0 passed, 1 failed, 0 skipped\n",
                    kLibrariesSubject, kLibrariesClaim, fault.c_str());
    return kFailed;
}

bool asksForTap(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--tap") == 0)
            return true;
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    // Never unloaded: there are threads and exit handlers.
    void* module = dlopen(moduleFile().c_str(), RTLD_NOW | RTLD_GLOBAL);
    void* entry = module != nullptr ? dlsym(module, "kepConformance") : nullptr;
    if (entry == nullptr)
        return report(loadingFault(), asksForTap(argc, argv));
    return reinterpret_cast<int (*)(int, char**)>(entry)(argc, argv);
}
