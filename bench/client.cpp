// SPDX-License-Identifier: Apache-2.0
// The client as the benchmarks use it.
#include "client.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platformlog.h"

void configure(const char* backend)
{
    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / "kep-bench-config";
    std::filesystem::create_directories(directory);
    std::ofstream{directory / "kep-config.json"} << R"({"Q27R5": {"kepAudio": ")" << backend
                                                 << R"("}})";
    std::ofstream{directory / "device-cap.json"} << "{}";
    setenv("KEP_CONFIG_DIR", directory.c_str(), 1);
}

kepClient& startClient(const char* backend)
{
    configure(backend);
    LogSetLevel(LogGetContext("kep"), kLogError);
    kepClient& client = *kepClient::getInstance();
    client.initialize();
    return client;
}
