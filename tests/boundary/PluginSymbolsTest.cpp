// SPDX-License-Identifier: MIT
// The finished plug-in exports exactly what its list names and needs nothing but the host, OpenGL and the C++ library.
#include "PluginSymbols.h"
#include "IncludeArrows.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using boundary::ExportList;
using boundary::ParseExports;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

ExportList PluginExports()
{
    return ParseExports(
        boundary::ReadText(std::filesystem::path(SKINDESK_SOURCE_DIR) / "plugin" / "toolweighting.exports"));
}

TEST(PluginSymbols, ThePluginExportsNothingThatItsListDoesNotName)
{
    const auto symbols = boundary::DefinedSymbols(SKINDESK_PLUGIN_FILE);
    EXPECT_THAT(symbols, Not(IsEmpty()));
    EXPECT_THAT(boundary::NotListed(PluginExports(), symbols), IsEmpty());
}

TEST(PluginSymbols, EverythingThatTheListNamesIsThere)
{
    const auto symbols = boundary::DefinedSymbols(SKINDESK_PLUGIN_FILE);
    EXPECT_THAT(boundary::NotDefined(PluginExports(), symbols), IsEmpty());
}

TEST(PluginSymbols, ThePluginNeedsOnlyTheHostOpenGlAndTheCppLibrary)
{
    const auto libraries = boundary::NeededLibraries(SKINDESK_PLUGIN_FILE);
    EXPECT_THAT(libraries, Contains(testing::HasSubstr("libskindesk_")));
    EXPECT_THAT(boundary::NotAllowed(libraries, SKINDESK_INSTRUMENTED), IsEmpty());
}

TEST(PluginSymbols, ASymbolThatIsNotListedIsFound)
{
    const ExportList list = ParseExports("{ global: Entry; local: *; };");
    EXPECT_THAT(boundary::NotListed(list, {"Entry", "_ZN4tool6SecretEv"}), ElementsAre("tool::Secret()"));
}

TEST(PluginSymbols, AListedSymbolThatIsNotDefinedIsFound)
{
    const ExportList list = ParseExports("{ global: Entry; Other*; local: *; };");
    EXPECT_THAT(boundary::NotDefined(list, {"Entry"}), ElementsAre("Other*"));
}

TEST(PluginSymbols, ClassesAreListedByTheirDemangledNames)
{
    const ExportList list = ParseExports("{\n  global:\n    Entry; # the door\n    extern \"C++\" {\n      ZList::*;\n"
                                         "      \"ZList::Add(int)\";\n    };\n  local: *;\n};\n");
    EXPECT_THAT(list.symbols, ElementsAre("Entry"));
    EXPECT_THAT(list.cppSymbols, ElementsAre("ZList::*", "ZList::Add(int)"));
    EXPECT_THAT(boundary::NotListed(list, {"_ZN5ZList3AddEi", "_ZN6ZOther3AddEi"}), ElementsAre("ZOther::Add(int)"));
}

TEST(PluginSymbols, AListThatHidesNothingIsRefused)
{
    EXPECT_THROW(ParseExports("{ global: Entry; };"), std::runtime_error);
    EXPECT_THROW(ParseExports("{ local: *; };"), std::runtime_error);
}

TEST(PluginSymbols, AForeignLibraryIsFound)
{
    EXPECT_THAT(boundary::NotAllowed({"libstdc++.so.6", "libQt6Core.so.6", "libskindesk_zmodel.so"}, false),
                ElementsAre("libQt6Core.so.6"));
    EXPECT_THAT(boundary::NotAllowed({"libasan.so.8"}, false), ElementsAre("libasan.so.8"));
    EXPECT_THAT(boundary::NotAllowed({"libasan.so.8"}, true), IsEmpty());
}

TEST(PluginSymbols, ALibraryThatIsNotThereIsAnError)
{
    EXPECT_THROW(boundary::DefinedSymbols("/nowhere/libnothing.so"), std::runtime_error);
}

} // namespace
