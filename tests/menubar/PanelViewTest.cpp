// The panel driven like a user would: clicks on its buttons and rows, over a fake home.
#include <QHelpEvent>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>
#include <QToolTip>

#include "PanelFixture.h"
#include "app/InMemoryStore.h"
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
#include "settings/OnboardingView.h"
#include "settings/SettingsView.h"

namespace kelvo::app::testing {
namespace {

using Phase = AppModel::Phase;
using kelvo::testing::writeFile;

class PanelViewTest : public PanelFixture {
protected:
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
    void clickRow(const std::string& id) {
        const QRect area = panel->targetList()->view()->visualRect(rowOf(id));
        ASSERT_TRUE(area.isValid());
        QTest::mouseClick(panel->targetList()->view()->viewport(), Qt::LeftButton, {}, area.center());
    }
};

TEST_F(PanelViewTest, ButtonsFollowThePhaseFromEmptyThroughScanToACleanThatRemovesTheSelectionAlone) {
    ASSERT_FALSE(Config{}.save(home));
    diskFigure = {100, 5};
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
    ASSERT_EQ(panel->currentScreen(), Screen::main);
    expectButtons("empty", true, false, false, false);
    EXPECT_EQ(footer.updatesButton(), nullptr);  // no updater, no button

    click(scan.scanButton());
    ASSERT_EQ(model->phase(), Phase::scanning);
    expectButtons("scanning", false, true, false, false);

    settle();
    ASSERT_EQ(model->phase(), Phase::idle);
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
    EXPECT_FALSE(panel->confirming());
    EXPECT_TRUE(std::filesystem::exists(home / ".npm/_cacache"));

    click(footer.actionButton());
    screenshot(*panel, "panel-confirm");
    click(footer.confirmBox()->deleteButton());
    EXPECT_TRUE(footer.cleaningRow()->isVisible());
    settle();

    EXPECT_EQ(model->phase(), Phase::done);
    EXPECT_FALSE(std::filesystem::exists(home / ".npm/_cacache"));
    for (const char* kept : {".npm", ".cache/zig/o/cc", ".cache/huggingface/hub/model.bin", "Documents/thesis.tex"})
        EXPECT_TRUE(std::filesystem::exists(home / kept)) << kept;
    ASSERT_TRUE(model->lastReport());
    EXPECT_GE(model->lastReport()->freedBytes, 9000);
    EXPECT_EQ(footer.resultText()->text().toStdString(), "Freed " + Format::bytes(model->lastReport()->freedBytes));
    screenshot(*panel, "panel-done");

    // Another domain starts from nothing, with a prompt unlike what a scan that finds nothing says.
    click(panel->header()->domainButton(AppModel::Domain::prepare));
    EXPECT_TRUE(model->targets().empty() && model->selectedIDs().empty());
    EXPECT_EQ(footer.actionButton()->text(), "Free up: nothing selected");
    EXPECT_FALSE(scan.selectAllButton()->isVisible());
    const QString prompt = panel->targetList()->emptyText()->text();
    click(scan.scanButton());
    settle();
    ASSERT_TRUE(model->targets().empty());
    EXPECT_NE(panel->targetList()->emptyText()->text(), prompt);
    screenshot(*panel, "panel-nothing-found");
    click(panel->header()->domainButton(AppModel::Domain::clean));
    EXPECT_EQ(panel->targetList()->emptyText()->text(), prompt);  // the prompt again: nothing scanned here yet
}

TEST_F(PanelViewTest, ScreensComeInOrderUpdateSettingsOnboardingMain) {
    const auto minimum = std::make_shared<std::string>("0.9");  // published; 1.0.0 runs
    makePanel(VersionGate("1.0.0", std::make_shared<InMemoryStore>(),
                          [minimum] { return std::optional(R"({"minVersion": ")" + *minimum + "\"}"); }));
    settle();  // the version check the panel started when shown
    EXPECT_EQ(panel->currentScreen(), Screen::onboarding);
    screenshot(*panel, "onboarding");
    click(panel->onboardingView()->chooseManuallyButton());
    EXPECT_TRUE(Config::exists(home) && !Config::load(home).enabledFamilies);
    EXPECT_EQ(panel->currentScreen(), Screen::settings);
    screenshot(*panel, "settings");
    click(panel->settingsView()->closeButton());
    EXPECT_EQ(panel->currentScreen(), Screen::main);
    screenshot(*panel, "panel-empty");
    click(panel->header()->gearButton());
    EXPECT_EQ(panel->currentScreen(), Screen::settings);

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

TEST_F(PanelViewTest, OnboardingShowsTheFoundProjectFoldersCheckedAndTheDetectionEnablesTheFamiliesFound) {
    writeFile(home / "code/app/package.json");  // projects with nothing built yet
    writeFile(home / "src/github.com/x/tool/Cargo.toml");
    std::filesystem::create_directories(root / "elsewhere");
    makePanel();
    settle();
    OnboardingView& onboarding = *panel->onboardingView();
    EXPECT_EQ(onboarding.checkedFolders(), (QStringList{"~/code", "~/src/github.com/x"}));
    screenshot(*panel, "onboarding-found");
    onboarding.projectFolders()->item(1)->setCheckState(Qt::Unchecked);
    onboarding.setFolderPicker([this] { return QString::fromStdString((root / "elsewhere").string()); });
    click(onboarding.addFolderButton());
    click(onboarding.detectButton());
    EXPECT_TRUE(onboarding.detectingRow()->isVisible());
    settle();
    EXPECT_EQ(panel->currentScreen(), Screen::main);
    const Config saved = Config::load(home);
    EXPECT_EQ(saved.projectRoots, (std::vector<std::string>{"~/code", (root / "elsewhere").string()}));
    EXPECT_EQ(saved.enabledFamilies, (std::vector<std::string>{"devMisc", "jsPackages", "otherLangs", "perProject"}));
}

}  // namespace
}  // namespace kelvo::app::testing
