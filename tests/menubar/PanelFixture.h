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
#include "support/StubServices.h"
#include "support/TempDir.h"

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
QT_END_NAMESPACE

namespace kelvo::app::testing {

class PanelFixture : public ::testing::Test {
protected:
    // The panel over a model of the fake home (with the gate when given), shown offscreen.
    PanelView& makePanel(std::optional<VersionGate> gate = std::nullopt) {
        const AppModelDependencies dependencies{
            background.poster(), [this] { return Environment::fromConfig(home, root / "tmp", Config::load(home)); },
            [](const Environment& env) { return kelvo::testing::stubServices(env); },
            [this](const std::filesystem::path&) { return std::optional(diskFigure); }};
        const auto services = dependencies.makeServices(dependencies.loadEnvironment());
        model = std::make_unique<AppModel>(ui.poster(), services.clean, services.prepare, std::move(gate), dependencies);
        model->refreshDisk();
        panel = std::make_unique<PanelView>(*model, nullptr, shell);
        panel->show();
        return *panel;
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
    // Saves a picture of the widget under the build folder and fails when it is all one colour
    // or when a text shown lacks the room it needs.
    void screenshot(QWidget& widget, const std::string& name);

    kelvo::testing::TempDir root;
    std::filesystem::path home = root / "home";
    kelvo::testing::ClosureQueue ui;
    kelvo::testing::ClosureQueue background;
    DiskSpace diskFigure{100'000'000'000, 50'000'000'000};
    std::vector<QUrl> opened;
    int quits = 0;
    ShellServices shell{.autostart = {root / "config/autostart/kelvo.desktop", "/opt/kelvo/kelvo-menubar"},
                        .cliLink = {root / "missing-tool", root / "bin"},
                        .openUrl = [this](const QUrl& url) { opened.push_back(url); },
                        .quit = [this] { ++quits; }};
    std::unique_ptr<AppModel> model;
    std::unique_ptr<PanelView> panel;
};

}  // namespace kelvo::app::testing
