// The widget tests run offscreen in one QApplication, in English, with the icon theme the
// application uses and a search path holding no tool, so no test sees the machine's tools.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>
#include <filesystem>

#include "Icons.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::setenv("LANG", "C", 1);
    ::unsetenv("LC_ALL");
    ::unsetenv("LC_MESSAGES");
    const auto noTools = std::filesystem::temp_directory_path() / "kelvo-menubar-test-empty-path";
    std::filesystem::create_directories(noTools);
    ::setenv("PATH", noTools.c_str(), 1);
    QApplication application(argc, argv);
    kelvo::app::Icons::useThemes();
    return RUN_ALL_TESTS();
}
