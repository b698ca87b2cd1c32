#include <gtest/gtest.h>

#include <map>

#include "kelvo/L10n.h"
#include "kelvo/Reason.h"

namespace kelvo {
namespace {

TEST(Reason, ReadsAsWrittenInEachLanguage) {
    using enum Reason::Code;
    const std::vector<std::pair<Reason, std::map<std::string, std::string>>> cases{
        {{toolNotFound, "ignored"}, {{"en", "The tool is not installed"}, {"es", "La herramienta no está instalada"}}},
        {{exitStatus, "-1"}, {{"en", "The command failed with status -1"}, {"es", "El comando falló con el estado -1"}}},
        {{symlinkAncestor, "/a"},
         {{"en", "The folder is reached through a symbolic link (/a)"},
          {"es", "La carpeta se alcanza a través de un enlace simbólico (/a)"}}},
        {{tmpDirUnanchored, "//"},
         {{"en", "Nothing was removed: the temporary folder (//) resolves to \"/\". Set TMPDIR to a folder of your own."},
          {"es", "No se borró nada: la carpeta temporal (//) apunta a \"/\". Pon en TMPDIR una carpeta propia."}}},
    };
    for (const auto& [reason, expected] : cases) {
        ASSERT_TRUE(expected.contains(L10n::currentLanguage())) << L10n::currentLanguage();
        EXPECT_EQ(reason.text(), expected.at(L10n::currentLanguage())) << Reason::key(reason.code);
    }
}

}  // namespace
}  // namespace kelvo
