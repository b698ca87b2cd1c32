// The application on a real X server with a real tray host: Xvfb, openbox and trayer,
// started by this program on a free display. xdotool clicks the tray icon like a user;
// the panel must appear under it, on screen, at its main screen.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QProcess>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTest>
#include <string>
#include <vector>

#include "AppDelegate.h"
#include "Icons.h"
#include "KelvoMenuBarApp.h"
#include "PanelView.h"
#include "kelvo/Config.h"
#include "support/StubServices.h"
#include "support/TempDir.h"

namespace kelvo::app {
namespace {

// Children of the test: the X server, the window manager and the tray host.
std::vector<pid_t> children;

pid_t spawn(const std::vector<std::string>& command, int keepFd = -1) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setpgid(0, 0);
        const int devNull = ::open("/dev/null", O_RDWR);
        for (const int fd : {0, 1, 2}) ::dup2(devNull, fd);
        if (keepFd < 0) ::close(devNull);
        std::vector<char*> arguments;
        for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    children.push_back(pid);
    return pid;
}

TEST(TrayEndToEnd, IconClickOpensThePanelUnderTheIcon) {
    testing::TempDir root;
    const auto home = root / "home";
    ASSERT_FALSE(Config{}.save(home));
    Dispatcher toEventLoop = [](Closure closure) { QMetaObject::invokeMethod(qApp, std::move(closure), Qt::QueuedConnection); };
    auto services = testing::stubServices(Environment::fromConfig(home, root / "tmp", Config::load(home)));
    auto model = std::make_unique<AppModel>(toEventLoop, services.clean, services.prepare, std::nullopt);
    KelvoMenuBarApp app(std::move(model), nullptr, {.autostart = {root / "autostart/kelvo.desktop", "/bin/true"}, .quit = [] {}});

    ASSERT_TRUE(QTest::qWaitFor([] { return QSystemTrayIcon::isSystemTrayAvailable(); }, 20000)) << "no tray host";
    AppDelegate::applicationDidFinishLaunching(app, true);
    EXPECT_FALSE(app.panel().isVisible());  // only the icon at start
    // Until trayer embeds it, the icon reports the origin; trayer sits at the top right. A
    // tray host that owns the selection but has not laid itself out yet can drop the first
    // docking request, so the icon asks again, as it would when a host starts late.
    const auto embedded = [&] { return app.tray()->geometry().x() > 0 && !app.tray()->geometry().isEmpty(); };
    for (int attempt = 0; attempt < 4 && !QTest::qWaitFor(embedded, 5000); ++attempt) {
        app.tray()->hide();
        app.tray()->show();
    }
    ASSERT_TRUE(embedded()) << "the tray host never embedded the icon";

    // The tray host may still move the icon while it lays itself out: a click that found
    // no icon is made again where the icon is now.
    for (int attempt = 0; attempt < 10 && !app.panel().isVisible(); ++attempt) {
        const QPoint icon = app.tray()->geometry().center();
        QProcess xdotool;
        xdotool.start("xdotool", {"mousemove", QString::number(icon.x()), QString::number(icon.y()), "click", "1"});
        ASSERT_TRUE(xdotool.waitForStarted());
        // The event loop keeps running while xdotool talks to the server.
        ASSERT_TRUE(QTest::qWaitFor([&] { return xdotool.state() == QProcess::NotRunning; }, 20000));
        ASSERT_EQ(xdotool.exitCode(), 0) << xdotool.readAllStandardError().toStdString();
        (void)QTest::qWaitFor([&] { return app.panel().isVisible(); }, 2000);
    }
    ASSERT_TRUE(app.panel().isVisible()) << "no click on the icon opened the panel";
    EXPECT_TRUE(app.panel().QWidget::screen()->availableGeometry().contains(app.panel().geometry())) << "off screen";
    EXPECT_GT(app.panel().geometry().top(), app.tray()->geometry().top());  // hangs under the icon
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&app.panel(), 20000));
    EXPECT_EQ(app.panel().currentScreen(), Screen::main);
}

}  // namespace
}  // namespace kelvo::app

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    // Xvfb on a display it picks itself and writes to the pipe.
    int pipe[2];
    if (::pipe(pipe) != 0) return 1;
    kelvo::app::spawn({"Xvfb", "-displayfd", std::to_string(pipe[1]), "-screen", "0", "1280x800x24", "-nolisten", "tcp"}, pipe[1]);
    ::close(pipe[1]);
    std::string display = ":";
    for (char c; ::read(pipe[0], &c, 1) == 1 && c != '\n';) display += c;
    ::close(pipe[0]);
    if (display == ":") {
        std::fprintf(stderr, "Xvfb did not start\n");
        return 1;
    }
    ::setenv("DISPLAY", display.c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    ::setenv("LANG", "C", 1);
    ::unsetenv("WAYLAND_DISPLAY");
    kelvo::app::spawn({"openbox", "--sm-disable"});
    kelvo::app::spawn({"trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "24"});
    int status;
    {
        QApplication application(argc, argv);
        kelvo::app::Icons::useThemes();
        status = RUN_ALL_TESTS();
    }
    for (auto it = kelvo::app::children.rbegin(); it != kelvo::app::children.rend(); ++it) {
        ::kill(-*it, SIGTERM);
        ::waitpid(*it, nullptr, 0);
    }
    return status;
}
