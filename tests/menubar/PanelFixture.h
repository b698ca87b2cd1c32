#pragma once
// A panel over a model of a fake home with stub probes and commands. The model's
// user-interface thread and its background work are queues that settle() runs to the
// end, so every step of a test happens in the order the test chooses.
#include <gtest/gtest.h>

#include <QTest>
#include <memory>

#include "PanelView.h"
#include "kelvo/AppModel.h"
#include "kelvo/Config.h"
#include "support/ClosureQueue.h"
#include "support/TempDir.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
QT_END_NAMESPACE

namespace kelvo::app::testing {

class PanelFixture : public ::testing::Test {
protected:
    PanelFixture();

    // The model over the fake home; a gate when given.
    AppModel& makeModel(std::optional<VersionGate> gate = std::nullopt);
    // The panel over the model (made first when missing), shown offscreen.
    PanelView& makePanel(std::optional<VersionGate> gate = std::nullopt);
    // Runs the queued background work and the replies it posts until nothing is left.
    void settle();
    void writeConfig(const Config& config = {});
    void click(QWidget* widget);
    // Saves a picture of the widget under the build folder and fails when it is all one colour.
    void screenshot(QWidget& widget, const std::string& name);

    kelvo::testing::TempDir root;
    std::filesystem::path home = root / "home";
    kelvo::testing::ClosureQueue ui;
    kelvo::testing::ClosureQueue background;
    DiskSpace diskFigure{100'000'000'000, 50'000'000'000};
    std::vector<QUrl> opened;
    int quits = 0;
    ShellServices shell;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<PanelView> panel;
};

// A gate whose published minimum is the given version, for a running 1.0.0.
VersionGate gateWithMinimum(const std::string& minimum);

}  // namespace kelvo::app::testing
