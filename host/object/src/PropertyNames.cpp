// SPDX-License-Identifier: MIT
#include "PropertyNames.h"

#include <set>
#include <string>

const char* PropertyNames_Keep(const char* name)
{
    static std::set<std::string>& names = *new std::set<std::string>;
    return names.insert(name).first->c_str();
}
