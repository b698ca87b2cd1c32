#include "PanelFixture.h"

#include <QDir>
#include <QImage>

#include "kelvo/InMemoryStore.h"
#include "support/StubServices.h"

namespace kelvo::app::testing {

PanelFixture::PanelFixture() {
    shell.autostart = {root / "config/autostart/kelvo.desktop", "/opt/kelvo/kelvo-menubar"};
    shell.cliLink = {root / "missing-tool", root / "bin"};
    shell.openUrl = [this](const QUrl& url) { opened.push_back(url); };
    shell.quit = [this] { ++quits; };
}

AppModel& PanelFixture::makeModel(std::optional<VersionGate> gate) {
    AppModelDependencies dependencies;
    dependencies.inBackground = background.poster();
    dependencies.loadEnvironment = [this] {
        return Environment::fromConfig(home, root / "tmp", Config::load(home));
    };
    dependencies.makeServices = [](const Environment& env) { return kelvo::testing::stubServices(env); };
    dependencies.measureDisk = [this](const std::filesystem::path&) { return std::optional(diskFigure); };
    const auto services = dependencies.makeServices(dependencies.loadEnvironment());
    model = std::make_unique<AppModel>(ui.poster(), services.clean, services.prepare, std::move(gate), dependencies);
    model->refreshDisk();
    return *model;
}

PanelView& PanelFixture::makePanel(std::optional<VersionGate> gate) {
    if (!model) makeModel(std::move(gate));
    panel = std::make_unique<PanelView>(*model, nullptr, shell);
    panel->show();
    return *panel;
}

void PanelFixture::settle() {
    for (auto work = background.takeAll(); true; work = background.takeAll()) {
        for (auto& closure : work) closure();
        ui.runAll();
        if (work.empty()) break;
    }
    QCoreApplication::processEvents();
}

void PanelFixture::writeConfig(const Config& config) { ASSERT_FALSE(config.save(home)); }

void PanelFixture::click(QWidget* widget) {
    ASSERT_NE(widget, nullptr);
    ASSERT_TRUE(widget->isVisible()) << widget->metaObject()->className();
    ASSERT_TRUE(widget->isEnabled()) << widget->metaObject()->className();
    QTest::mouseClick(widget, Qt::LeftButton);
}

void PanelFixture::screenshot(QWidget& widget, const std::string& name) {
    const QImage image = widget.grab().toImage();
    ASSERT_FALSE(image.isNull()) << name;
    QDir().mkpath(KELVO_SCREENSHOT_DIR);
    image.save(QString(KELVO_SCREENSHOT_DIR "/%1.png").arg(QString::fromStdString(name)));
    std::set<QRgb> colours;
    for (int y = 0; y < image.height() && colours.size() < 3; y += 3)
        for (int x = 0; x < image.width() && colours.size() < 3; x += 3) colours.insert(image.pixel(x, y));
    EXPECT_GE(colours.size(), 3u) << name << " renders blank";
}

VersionGate gateWithMinimum(const std::string& minimum) {
    return VersionGate("1.0.0", std::make_shared<InMemoryStore>(std::map<std::string, std::string>{}),
                       [minimum] { return std::optional<std::string>(R"({"minVersion": ")" + minimum + "\"}"); });
}

}  // namespace kelvo::app::testing
