// The panel and its settings screen driven like a user would: clicks on buttons and rows, over a
// fake home; and the updater behind the panel's button.
#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QDir>
#include <QHelpEvent>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTextDocument>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <sys/stat.h>

#include <fstream>
#include <memory>

#include "PanelView.h"
#include "app/InMemoryStore.h"
#include "desktop/Updater.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/Config.h"
#include "kelvo/Format.h"
#include "panel/Palette.h"
#include "panel/ConfirmBox.h"
#include "panel/DiskBar.h"
#include "panel/Footer.h"
#include "panel/Header.h"
#include "panel/ScanRow.h"
#include "panel/TargetList.h"
#include "panel/TargetListModel.h"
#include "panel/UpdateRequiredView.h"
#include "panel/UpdatesMenuButton.h"
#include "settings/OnboardingView.h"
#include "settings/PathListEditor.h"
#include "settings/SettingsView.h"
#include "support/ClosureQueue.h"
#include "support/LoopbackServer.h"
#include "support/StubServices.h"
#include "support/TempDir.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
QT_END_NAMESPACE

namespace kelvo::app::testing {
namespace {

using kelvo::testing::writeFile;

// Saves a picture of the widget under the build folder and fails when it is all one colour or
// when a text shown lacks the room it needs.
void screenshot(QWidget& widget, const std::string& name) {
    QCoreApplication::processEvents();  // layouts settle before anything is measured
    // Every text shown has the room it needs: a label its lines, a button its hint.
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
        if (!label->isVisibleTo(&widget) || label->text().isEmpty() || Qt::mightBeRichText(label->text())) continue;
        const QRect room = label->contentsRect();
        // Laid out from the top: a centred line in a tall rectangle would round to one pixel more.
        const int flags = static_cast<int>(label->alignment() & Qt::AlignHorizontal_Mask) |
                          (label->wordWrap() ? Qt::TextWordWrap : 0);
        const QRect needed = label->fontMetrics().boundingRect(QRect(0, 0, room.width(), 100000), flags, label->text());
        EXPECT_TRUE(needed.width() <= room.width() && needed.height() <= room.height())
            << name << ": \"" << label->text().toStdString() << "\" needs " << needed.width() << "x" << needed.height()
            << ", has " << room.width() << "x" << room.height();
    }
    for (const QAbstractButton* button : widget.findChildren<QAbstractButton*>())
        EXPECT_TRUE(!button->isVisibleTo(&widget) || button->text().isEmpty() || button->width() >= button->sizeHint().width())
            << name << ": " << button->text().toStdString();
    // Nothing is wider than its scroll area, the bar shown or not.
    for (const QAbstractScrollArea* area : widget.findChildren<QAbstractScrollArea*>())
        EXPECT_TRUE(!area->isVisibleTo(&widget) || area->horizontalScrollBar()->maximum() == 0) << name;

    const QImage image = widget.grab().toImage();
    ASSERT_FALSE(image.isNull()) << name;
    const QString folder = QCoreApplication::applicationDirPath() + "/../screenshots";  // beside the tests' folder
    QDir().mkpath(folder);
    image.save(QString("%1/%2.png").arg(folder, QString::fromStdString(name)));
    std::set<QRgb> colours;
    for (int y = 0; y < image.height() && colours.size() < 3; y += 3)
        for (int x = 0; x < image.width() && colours.size() < 3; x += 3) colours.insert(image.pixel(x, y));
    EXPECT_GE(colours.size(), 3u) << name << " renders blank";
}

// A panel over a model of a fake home with stub probes and commands. The model's
// user-interface thread and its background work are queues that settle() runs to the
// end, so every step of a test happens in the order the test chooses.
class PanelViewTest : public ::testing::Test {
protected:
    // The panel over a model of the fake home (with the gate when given), shown offscreen.
    void makePanel(std::optional<VersionGate> gate = std::nullopt) {
        const AppModelDependencies dependencies{
            background.poster(), [this] { return Environment::fromConfig(home, root / "tmp", Config::load(home)); },
            [](const Environment& env) { return kelvo::testing::stubServices(env); },
            [](const std::filesystem::path&) { return std::optional(DiskSpace{100, 5}); }};  // a disk nearly full
        const auto services = dependencies.makeServices(dependencies.loadEnvironment());
        model = std::make_unique<AppModel>(ui.poster(), services.clean, services.prepare, std::move(gate), dependencies);
        model->refreshDisk();
        panel = std::make_unique<PanelView>(*model, nullptr, shell);
        panel->show();
    }
    // Runs the queued background work and the replies it posts until nothing is left.
    void settle() {
        for (auto work = background.takeAll(); true; work = background.takeAll()) {
            for (auto& closure : work) closure();
            ui.runAll();
            if (work.empty()) break;
        }
        QCoreApplication::processEvents();
    }
    void click(QWidget* widget) {
        ASSERT_TRUE(widget && widget->isVisible() && widget->isEnabled()) << (widget ? widget->metaObject()->className() : "");
        QTest::mouseClick(widget, Qt::LeftButton);
    }

    void SetUp() override {
        writeFile(home / ".npm/_cacache/content-v2/aa/bb", 9000);  // js packages, safe: preselected
        writeFile(home / ".cache/zig/o/cc", 30000);                // other languages, safe: preselected
        writeFile(home / ".cache/huggingface/hub/model.bin", 50000);  // aggressive: offered, not chosen
        writeFile(home / "Documents/thesis.tex", 5000);
    }

    // The row of the list that shows a target.
    QModelIndex rowOf(const std::string& id) const {
        auto* rows = panel->targetList()->rows();
        for (int row = 0; row < rows->rowCount(); ++row)
            if (const auto* target = rows->target(rows->index(row)); target && target->id == id) return rows->index(row);
        ADD_FAILURE() << "no row for " << id;
        return {};
    }
    // The settings screen, over a panel made first with a file of the defaults when missing.
    SettingsView& openSettings() {
        if (!panel) {
            EXPECT_FALSE(Config{}.save(home));
            makePanel();
        }
        click(panel->header()->gearButton());
        return *panel->settingsView();
    }
    void clickRow(const std::string& id) {
        const QRect area = panel->targetList()->view()->visualRect(rowOf(id));
        ASSERT_TRUE(area.isValid());
        QTest::mouseClick(panel->targetList()->view()->viewport(), Qt::LeftButton, {}, area.center());
    }

    kelvo::testing::TempDir root;
    std::filesystem::path home = root / "home";
    kelvo::testing::ClosureQueue ui;
    kelvo::testing::ClosureQueue background;
    std::vector<QUrl> opened;
    int quits = 0;
    ShellServices shell{.autostart = {root / "config/autostart/kelvo.desktop", "/opt/kelvo/kelvo-menubar"},
                        .cliLink = {root / "missing-tool", root / "bin"},
                        .openUrl = [this](const QUrl& url) { opened.push_back(url); },
                        .quit = [this] { ++quits; }};
    std::unique_ptr<AppModel> model;
    std::unique_ptr<PanelView> panel;
};

TEST_F(PanelViewTest, ButtonsFollowThePhaseFromEmptyThroughScanToACleanThatRemovesTheSelectionAlone) {
    ASSERT_FALSE(Config{}.save(home));
    makePanel();
    EXPECT_EQ(panel->diskBar()->fillColour(), Palette::red);
    EXPECT_EQ(panel->diskBar()->caption()->text(), "5 B free of 100 B");
    ScanRow& scan = *panel->scanRow();
    Footer& footer = *panel->footer();
    const auto expectButtons = [&](const char* step, bool scanEnabled, bool cancelShown, bool selectShown, bool actionEnabled) {
        SCOPED_TRACE(step);
        EXPECT_EQ(scan.scanButton()->isEnabled(), scanEnabled);
        EXPECT_EQ(scan.cancelButton()->isVisible(), cancelShown);
        EXPECT_EQ(scan.selectAllButton()->isVisible(), selectShown);
        EXPECT_EQ(footer.actionButton()->isEnabled(), actionEnabled);
        for (auto domain : AppModel::allDomains) EXPECT_EQ(panel->header()->domainButton(domain)->isEnabled(), scanEnabled);
    };
    expectButtons("empty", true, false, false, false);
    EXPECT_EQ(footer.updatesButton(), nullptr);  // no updater, no button

    click(scan.scanButton());
    expectButtons("scanning", false, true, false, false);

    settle();
    expectButtons("scanned", true, false, true, true);
    // Sections in the order of every family, whatever the sizes: js packages before other languages.
    std::vector<std::string> sections;
    auto* rows = panel->targetList()->rows();
    for (int row = 0; row < rows->rowCount(); ++row)
        if (!rows->target(rows->index(row))) sections.push_back(rows->index(row).data().toString().toStdString());
    EXPECT_EQ(sections, (std::vector<std::string>{displayName(Family::jsPackages), displayName(Family::devMisc),
                                                  displayName(Family::otherLangs)}));
    screenshot(*panel, "panel-results");

    // Hovering a row shows the paths a clean would remove there .
    auto* view = panel->targetList()->view();
    const QPoint point = view->visualRect(rowOf("npm-cache")).center();
    QHelpEvent hover(QEvent::ToolTip, point, view->viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(view->viewport(), &hover);
    EXPECT_EQ(QToolTip::text().toStdString(), "npm cache\n" + (home / ".npm/_cacache").string());
    QToolTip::hideText();

    // A click anywhere on a row ticks it or unticks it; the header and the action follow.
    clickRow("npm-cache");
    EXPECT_FALSE(model->selectedIDs().contains("npm-cache"));
    click(scan.selectNoneButton());
    expectButtons("nothing selected", true, false, true, false);
    EXPECT_EQ(panel->header()->selectedLabel()->text(), "0 B");
    clickRow("npm-cache");
    EXPECT_EQ(model->selectedIDs(), std::set<std::string>{"npm-cache"});
    const std::string bytes = Format::bytes(selectedBytes(*model));
    EXPECT_EQ(footer.actionButton()->text().toStdString(), "Clean " + bytes);

    // A confirmed clean removes the selection and nothing else; cancelled first, nothing happens.
    click(footer.actionButton());
    EXPECT_FALSE(footer.actionButton()->isVisible());
    EXPECT_EQ(footer.confirmBox()->message()->text().toStdString(), "Remove 1 target (" + bytes + ")? This cannot be undone.");
    click(footer.confirmBox()->cancelButton());
    EXPECT_TRUE(std::filesystem::exists(home / ".npm/_cacache"));

    click(footer.actionButton());  // back once the box is cancelled
    screenshot(*panel, "panel-confirm");
    click(footer.confirmBox()->deleteButton());
    EXPECT_TRUE(footer.cleaningRow()->isVisible());
    settle();

    EXPECT_FALSE(std::filesystem::exists(home / ".npm/_cacache"));
    for (const char* kept : {".npm", ".cache/zig/o/cc", ".cache/huggingface/hub/model.bin", "Documents/thesis.tex"})
        EXPECT_TRUE(std::filesystem::exists(home / kept)) << kept;
    ASSERT_TRUE(model->lastReport());
    EXPECT_EQ(footer.resultText()->text().toStdString(), "Freed " + Format::bytes(model->lastReport()->freedBytes));
    screenshot(*panel, "panel-done");

    // Another domain starts from nothing, with a prompt unlike what a scan that finds nothing says.
    click(panel->header()->domainButton(AppModel::Domain::prepare));
    expectButtons("another domain", true, false, false, false);
    const QString prompt = panel->targetList()->emptyText()->text();
    click(scan.scanButton());
    settle();
    ASSERT_TRUE(model->targets().empty());
    EXPECT_NE(panel->targetList()->emptyText()->text(), prompt);
    screenshot(*panel, "panel-nothing-found");
    click(panel->header()->domainButton(AppModel::Domain::clean));
    EXPECT_EQ(panel->targetList()->emptyText()->text(), prompt);  // the prompt again: nothing scanned here yet
}

TEST_F(PanelViewTest, ScreensComeInOrderUpdateSettingsOnboardingMainAndTheDetectionKeepsTheFoldersChecked) {
    writeFile(home / "code/app/package.json");  // projects with nothing built yet
    writeFile(home / "src/github.com/x/tool/Cargo.toml");
    std::filesystem::create_directories(root / "elsewhere");
    const auto minimum = std::make_shared<std::string>("0.9");  // published; 1.0.0 runs
    makePanel(VersionGate("1.0.0", std::make_shared<InMemoryStore>(),
                          [minimum] { return std::optional(R"({"minVersion": ")" + *minimum + "\"}"); }));
    settle();  // the version check and the search for project folders the panel started when shown
    OnboardingView& onboarding = *panel->onboardingView();
    EXPECT_EQ(onboarding.checkedFolders(), (QStringList{"~/code", "~/src/github.com/x"}));
    screenshot(*panel, "onboarding");
    onboarding.projectFolders()->item(1)->setCheckState(Qt::Unchecked);
    onboarding.setFolderPicker([this] { return QString::fromStdString((root / "elsewhere").string()); });
    click(onboarding.addFolderButton());
    click(onboarding.detectButton());
    EXPECT_TRUE(onboarding.detectingRow()->isVisible());
    settle();
    screenshot(*panel, "panel-empty");
    EXPECT_EQ(Config::load(home), (Config{.projectRoots = {"~/code", (root / "elsewhere").string()},
                                          .enabledFamilies = {{"devMisc", "jsPackages", "otherLangs", "perProject"}}}));
    click(panel->header()->gearButton());
    EXPECT_EQ(panel->currentScreen(), Screen::settings);
    screenshot(*panel, "settings");

    // A required update comes before everything, settings included.
    *minimum = "2.0";
    model->checkMinimumVersion();
    settle();
    EXPECT_EQ(panel->currentScreen(), Screen::updateRequired);
    screenshot(*panel, "update-required");
    click(panel->updateRequiredView()->downloadButton());
    EXPECT_EQ(opened, std::vector<QUrl>{UpdateRequiredView::downloadPage()});
    click(panel->updateRequiredView()->quitButton());
    EXPECT_EQ(quits, 1);
}

// The settings screen and its path editor: what Save stores, what Cancel drops, what a file
// that cannot be used shows, and the two switches that act at once (start at login, the
// command-line link).
TEST_F(PanelViewTest, SettingsSaveTheFamilyListOnlyWhenNotEveryFamilyIsOnCancelNothingAndABadFileIsNamed) {
    makePanel();
    click(panel->onboardingView()->chooseManuallyButton());  // writes a file of the defaults, with no notice
    EXPECT_TRUE(Config::exists(home) && !Config::load(home).enabledFamilies);
    EXPECT_FALSE(panel->settingsView()->configProblem()->isVisible());
    click(panel->settingsView()->closeButton());
    const Config loaded{.defaultLevel = "aggressive", .keepRecentDays = 7, .enabledFamilies = {{"docker", "nonsense"}}};
    ASSERT_FALSE(loaded.save(home));
    SettingsView* settings = &openSettings();
    EXPECT_TRUE(settings->familyToggle(Family::docker)->isChecked());
    EXPECT_FALSE(settings->familyToggle(Family::python)->isChecked());
    EXPECT_EQ(settings->keepRecent()->value(), 7);
    settings->roots()->setPaths({"~/elsewhere"});
    click(settings->cancelButton());
    EXPECT_EQ(Config::load(home), loaded);

    settings = &openSettings();
    for (Family family : {Family::python, Family::gameEngines}) settings->familyToggle(family)->setChecked(true);
    settings->keepRecent()->setValue(12);
    settings->checkVersion()->setChecked(false);
    click(settings->saveButton());
    // Sorted by name, the unknown name dropped, the default level kept though no control shows it.
    EXPECT_EQ(Config::load(home), (Config{.defaultLevel = "aggressive", .keepRecentDays = 12,
                                          .enabledFamilies = {{"docker", "gameEngines", "python"}},
                                          .checkMinimumVersion = false}));

    settings = &openSettings();
    for (Family family : CleanerRegistry::familiesWithDetectors(model->cleanService().env))
        settings->familyToggle(family)->setChecked(true);
    click(settings->saveButton());
    EXPECT_FALSE(Config::load(home).enabledFamilies);

    const auto file = kelvo::testing::writeText(Config::filePath(home), R"({"projectRoots": ["~/p"], "keepRecentDays": "7"})");
    settings = &openSettings();
    EXPECT_EQ(settings->configProblem()->isVisible() ? settings->configProblem()->text().toStdString() : "",
              "The configuration file " + file.string() + " cannot be used: the key \"extraExclusions\" is missing. " +
                  "The defaults are shown below; Save writes them over it.");
    EXPECT_EQ(settings->roots()->paths(), QStringList{"~/workspace"});
    screenshot(*panel, "settings-config-problem");

    // A save that fails keeps the screen and its edits and says why.
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    settings->keepRecent()->setValue(9);
    click(settings->saveButton());  // returns: a FIFO is never opened
    EXPECT_EQ(panel->currentScreen(), Screen::settings);
    EXPECT_EQ(settings->keepRecent()->value(), 9);
    EXPECT_NE(settings->saveError()->isVisible() ? settings->saveError()->text().indexOf("other than a regular file") : -1, -1);
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

TEST_F(PanelViewTest, StartAtLoginWritesAndRemovesTheAutostartEntryOrSaysWhyNot) {
    SettingsView* settings = &openSettings();
    settings->launchAtLogin()->click();  // off at first: no entry
    EXPECT_TRUE(shell.autostart.enabled());
    EXPECT_FALSE(settings->loginError()->isVisible());

    // Hidden by the desktop's own settings: off, and the reopened screen says so.
    std::ofstream(shell.autostart.entry, std::ios::app) << "Hidden=true\n";
    click(settings->closeButton());
    settings = &openSettings();
    EXPECT_FALSE(settings->launchAtLogin()->isChecked());
    settings->launchAtLogin()->click();
    EXPECT_TRUE(shell.autostart.enabled());
    settings->launchAtLogin()->click();
    EXPECT_FALSE(std::filesystem::exists(shell.autostart.entry));

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

TEST_F(PanelViewTest, CommandLineLinkReplacesWhatIsThereOrSaysWhatToRun) {
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

// The updater against a feed served on 127.0.0.1: the button is greyed out while the
// answer is awaited, the dialog says what the feed said, and its button opens the page.
TEST(Updater, ButtonIsGreyedOutWhileACheckRunsAndTheDialogOffersTheNewerRelease) {
    kelvo::testing::LoopbackServer feed;  // holds its answer until the test gives it
    std::vector<QUrl> opened;
    Updater updater("1.0.0", VersionGate::download(feed.url("/feed.json")), [&](const QUrl& url) { opened.push_back(url); });
    UpdatesMenuButton button(updater);
    button.show();
    QSignalSpy answered(&updater, &Updater::checked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);  // ignored: one check at a time

    feed.answer(kelvo::testing::LoopbackServer::response(
        "200 OK", R"({"version": "1.2.0", "url": "https://example.org/kelvo-1.2.0"})"));
    ASSERT_TRUE(answered.wait(30000));
    EXPECT_EQ(answered.count(), 1);
    EXPECT_EQ(answered.at(0).at(0).value<Updater::Answer>(), Updater::Answer::newer);
    EXPECT_TRUE(button.isEnabled());
    ASSERT_NE(updater.dialog(), nullptr);
    EXPECT_EQ(updater.dialog()->text(), "Kelvo 1.2.0 is available (you have 1.0.0).");
    for (auto* choice : updater.dialog()->findChildren<QPushButton*>())
        if (choice->text() == "Open the download page") choice->click();
    EXPECT_EQ(opened, std::vector<QUrl>{QUrl("https://example.org/kelvo-1.2.0")});
}

TEST(Updater, AnswerComparesVersionsByTheGateRule) {
    const struct { const char* feed; Updater::Answer expected; } rows[] = {
        {R"({"version": "1.2.0", "url": "u"})", Updater::Answer::upToDate},
        {R"({"version": 2, "url": "u"})", Updater::Answer::failed},
    };
    for (const auto& row : rows) EXPECT_EQ(Updater::answer("1.2", Updater::Release::decode(row.feed)), row.expected) << row.feed;
}

}  // namespace
}  // namespace kelvo::app::testing
