// SPDX-License-Identifier: MIT
// Any bytes as a configuration file: they are read, numbers are finite, and what is set can be read back.
#include "zbaselib/ZConfigFile.h"
#include "zbaselib/ZReport.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ZConfigFile file("", false, false);
    file.ReadText("[Weighting]\nDeadWeight=0.1\n");
    file.ReadText(text);
    if (!std::isfinite(file.Get("Weighting", "DeadWeight", 0.1f)))
        std::abort();
    const std::string value(text.substr(0, 32));
    file.Set("Fuzz", "Value", value);
    if (file.Get("Fuzz", "Value", "").find('\n') != std::string::npos)
        std::abort();
    ZReport_ClearWarnings();
    return 0;
}
