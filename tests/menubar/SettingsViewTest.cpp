// The settings screen and its path editor: what Save stores, what Cancel drops, and the
// two switches that act at once (start at login, the command-line link).
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <sys/stat.h>

#include <fstream>

#include "PanelFixture.h"
#include "kelvo/CleanerRegistry.h"
#include "panel/Header.h"
#include "settings/PathListEditor.h"
#include "settings/SettingsView.h"

namespace kelvo::app::testing {
namespace {

using kelvo::testing::writeFile;

class SettingsViewTest : public PanelFixture {
protected:
    SettingsView& openSettings(const Config& config = {}) {
        if (!panel) {
            EXPECT_FALSE(config.save(home));
            makePanel();
        }
        click(panel->header()->gearButton());
        return *panel->settingsView();
    }
};

TEST_F(SettingsViewTest, SaveStoresTheFamilyListOnlyWhenNotEveryFamilyIsOnAndCancelStoresNothing) {
    const Config loaded{.defaultLevel = "aggressive", .keepRecentDays = 7, .enabledFamilies = {{"docker", "nonsense"}}};
    SettingsView* settings = &openSettings(loaded);
    EXPECT_TRUE(settings->familyToggle(Family::docker)->isChecked());
    EXPECT_FALSE(settings->familyToggle(Family::python)->isChecked());
    EXPECT_EQ(settings->keepRecent()->value(), 7);
    settings->roots()->setPaths({"~/elsewhere"});
    click(settings->cancelButton());
    EXPECT_EQ(Config::load(home), loaded);

    settings = &openSettings();
    const auto offered = CleanerRegistry::familiesWithDetectors(model->cleanService().env);
    for (Family family : offered) settings->familyToggle(family)->setChecked(family != Family::python);
    settings->keepRecent()->setValue(12);
    settings->checkVersion()->setChecked(false);
    click(settings->saveButton());
    EXPECT_EQ(panel->currentScreen(), Screen::main);
    std::vector<std::string> allButPython;
    for (Family family : offered)
        if (family != Family::python) allButPython.emplace_back(rawValue(family));
    std::ranges::sort(allButPython);
    // The default level kept, though no control shows it.
    EXPECT_EQ(Config::load(home), (Config{.defaultLevel = "aggressive", .keepRecentDays = 12, .enabledFamilies = allButPython,
                                          .checkMinimumVersion = false}));

    settings = &openSettings();
    settings->familyToggle(Family::python)->setChecked(true);
    click(settings->saveButton());
    EXPECT_FALSE(Config::load(home).enabledFamilies);
}

TEST_F(SettingsViewTest, AFileThatCannotBeUsedIsNamedAboveTheDefaultsAndAFailedSaveSaysWhy) {
    EXPECT_FALSE(openSettings().configProblem()->isVisible());  // a good file: no notice
    click(panel->settingsView()->closeButton());
    const auto file = kelvo::testing::writeText(Config::filePath(home), R"({"projectRoots": ["~/p"], "keepRecentDays": "7"})");
    SettingsView& settings = openSettings();
    EXPECT_EQ(settings.configProblem()->isVisible() ? settings.configProblem()->text().toStdString() : "",
              "The configuration file " + file.string() + " cannot be used: the key \"extraExclusions\" is missing. " +
                  "The defaults are shown below; Save writes them over it.");
    EXPECT_EQ(settings.roots()->paths(), QStringList{"~/workspace"});
    screenshot(*panel, "settings-config-problem");

    // A save that fails keeps the screen and its edits and says why.
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    settings.keepRecent()->setValue(9);
    click(settings.saveButton());  // returns: a FIFO is never opened
    EXPECT_EQ(panel->currentScreen(), Screen::settings);
    EXPECT_EQ(settings.keepRecent()->value(), 9);
    EXPECT_NE(settings.saveError()->isVisible() ? settings.saveError()->text().indexOf("other than a regular file") : -1, -1);
    EXPECT_TRUE(std::filesystem::is_fifo(file));
    screenshot(*panel, "settings-save-failed");
}

TEST(PathListEditor, TrimsRefusesDuplicatesAndRemovesEveryEqualEntry) {
    QString chosen;
    PathListEditor editor("Folders", "folder", "hint", "placeholder", "/home/u", nullptr, [&](QWidget*) { return chosen; });
    const struct { const char* typed; QStringList expected; } steps[] = {
        {"  ~/code\t", {"~/code"}}, {"~/code", {"~/code"}}, {" \t ", {"~/code"}}, {"/srv/x", {"~/code", "/srv/x"}},
    };
    for (const auto& step : steps) {
        QTest::keyClicks(editor.field(), step.typed);
        QTest::keyClick(editor.field(), Qt::Key_Return);
        EXPECT_EQ(editor.paths(), step.expected) << step.typed;
        EXPECT_TRUE(editor.field()->text().isEmpty());
    }
    for (const auto& folder : {"/home/u/src", "", "/home/u"}) {  // a folder in the home, none chosen, the home
        chosen = folder;
        QTest::mouseClick(editor.chooseButton(), Qt::LeftButton);
    }
    EXPECT_EQ(editor.paths(), (QStringList{"~/code", "/srv/x", "~/src", "~"}));
    editor.setPaths({"~/a", "~/b", "~/a"});
    QTest::mouseClick(editor.removeButton(2), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(editor.paths(), QStringList{"~/b"});
}

TEST_F(SettingsViewTest, StartAtLoginWritesAndRemovesTheAutostartEntryOrSaysWhyNot) {
    SettingsView* settings = &openSettings();
    const auto entry = shell.autostart.entry;
    EXPECT_FALSE(settings->launchAtLogin()->isChecked());
    settings->launchAtLogin()->click();
    std::ifstream file(entry);
    EXPECT_NE(std::string(std::istreambuf_iterator<char>(file), {}).find("\nExec=/opt/kelvo/kelvo-menubar\n"), std::string::npos);
    EXPECT_FALSE(settings->loginError()->isVisible());

    // Hidden by the desktop's own settings: off, and the reopened screen says so.
    std::ofstream(entry, std::ios::app) << "Hidden=true\n";
    click(settings->closeButton());
    settings = &openSettings();
    EXPECT_FALSE(settings->launchAtLogin()->isChecked());
    settings->launchAtLogin()->click();
    EXPECT_TRUE(shell.autostart.enabled());
    settings->launchAtLogin()->click();
    EXPECT_FALSE(std::filesystem::exists(entry));

    // A failure shows the reason and the real state: no autostart folder can be made below a file.
    std::filesystem::remove_all(root / "config");
    writeFile(root / "config", 10);
    settings->launchAtLogin()->click();
    EXPECT_FALSE(settings->launchAtLogin()->isChecked());
    EXPECT_TRUE(settings->loginError()->isVisible());
    EXPECT_TRUE(settings->loginError()->text().startsWith(SettingsView::loginFailurePrefix));
    EXPECT_GT(settings->loginError()->text().size(), QString(SettingsView::loginFailurePrefix).size());
}

TEST(Autostart, TheProgramIsOneArgumentOfTheExecLineWhateverItsPathHolds) {
    kelvo::testing::TempDir root;
    const struct { const char* program; const char* exec; } rows[] = {
        {"/opt/100%/kelvo", "Exec=/opt/100%%/kelvo"},
        {"/opt/my apps/kelvo", R"(Exec="/opt/my apps/kelvo")"},
        {"/opt/a$b\\c/kelvo", R"(Exec="/opt/a\\$b\\\\c/kelvo")"},
    };
    for (const auto& row : rows) {
        const Autostart autostart{root / "kelvo.desktop", row.program};
        ASSERT_FALSE(autostart.setEnabled(true));
        std::ifstream file(autostart.entry);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        EXPECT_NE(text.find(std::string("\n") + row.exec + "\n"), std::string::npos) << text;
    }
}

TEST_F(SettingsViewTest, CommandLineLinkReplacesWhatIsThereOrSaysWhatToRun) {
    const auto tool = writeFile(root / "app/kelvo", 10);
    shell.cliLink = {tool, root / "bin"};
    SettingsView& settings = openSettings();
    writeFile(root / "bin/kelvo", 3);  // an old copy in the way
    click(settings.installCliButton());
    EXPECT_EQ(std::filesystem::read_symlink(root / "bin/kelvo"), tool);
    EXPECT_TRUE(settings.cliInstalledMark()->isVisible());

    const struct { CliLink link; CliLink::Outcome expected; } rows[] = {
        {{root / "app/none", root / "bin2"}, CliLink::Outcome::notBundled},
        {{tool, tool / "bin"}, CliLink::Outcome::refused},  // a folder below a file cannot be made
    };
    for (const auto& row : rows) EXPECT_EQ(row.link.install(), row.expected) << row.link.linkFolder;
    EXPECT_FALSE(std::filesystem::exists(root / "bin2"));
    EXPECT_EQ(rows[1].link.fallbackCommand(), "sudo ln -sf \"" + tool.string() + "\" " + (tool / "bin/kelvo").string());
}

}  // namespace
}  // namespace kelvo::app::testing
