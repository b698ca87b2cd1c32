// Figures of the desktop application on the X display it is given (the script starts
// Xvfb, openbox and trayer): time from process start to the tray icon embedded, from the
// icon's click to the panel painted, the event loop's worst lateness during a scan and a
// clean of the home in $HOME, resident memory after the scan, and CPU time while idle.
// Prints one "name value unit" line per figure.
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <QElapsedTimer>
#include <QEvent>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QTest>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "AppDelegate.h"
#include "Icons.h"
#include "KelvoMenuBarApp.h"
#include "PanelView.h"

namespace {

using Clock = std::chrono::steady_clock;

// Milliseconds since this process started, from the kernel's start time of the process.
double msSinceProcessStart() {
    std::ifstream stat("/proc/self/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    for (int i = 3; i <= 22; ++i) fields >> field;  // field 22: start time in clock ticks after boot
    const double started = std::stod(field) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return (now.tv_sec + now.tv_nsec / 1e9 - started) * 1000.0;
}

long statusKilobytes(const char* name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(name, 0) == 0) return std::stol(line.substr(std::string(name).size()));
    return -1;
}

double cpuSeconds() {
    std::ifstream stat("/proc/self/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    long ticks = 0;
    for (int i = 3; i <= 15; ++i) {
        fields >> field;
        if (i >= 14) ticks += std::stol(field);  // utime, stime
    }
    return static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// The worst lateness of a 10 ms timer while it runs.
class LatencyProbe {
public:
    LatencyProbe() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            const auto now = Clock::now();
            worst_ = std::max(worst_, std::chrono::duration<double, std::milli>(now - last_).count() - 10.0);
            last_ = now;
        });
    }
    void start() {
        worst_ = 0;
        last_ = Clock::now();
        timer_.start(10);
    }
    double stop() {
        timer_.stop();
        return worst_;
    }

private:
    QTimer timer_;
    Clock::time_point last_;
    double worst_ = 0;
};

// Runs the event loop until the condition holds; a benchmark that cannot get there stops.
template <class Condition>
void waitFor(const char* what, Condition condition, int timeoutMs) {
    if (QTest::qWaitFor(condition, timeoutMs)) return;
    std::fprintf(stderr, "gave up waiting for %s\n", what);
    std::exit(1);
}

void print(const char* name, double value, const char* unit) { std::printf("%s %.1f %s\n", name, value, unit); }

}  // namespace

int main(int argc, char** argv) {
    using namespace kelvo;
    using namespace kelvo::app;
    QApplication application(argc, argv);
    Icons::useThemes();
    auto app = KelvoMenuBarApp::live();
    AppDelegate::applicationDidFinishLaunching(*app);
    if (!app->usesTray()) {
        std::fprintf(stderr, "no tray host on this display\n");
        return 1;
    }
    waitFor("the icon", [&] { return app->tray()->geometry().x() > 0; }, 30000);
    print("start_to_icon", msSinceProcessStart(), "ms");

    // Click to painted: from the icon's activation to the end of the panel's first paint.
    QElapsedTimer sinceClick;
    double painted = -1;
    struct PaintWatch : QObject {
        std::function<void()> onPaint;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint) QTimer::singleShot(0, this, [this] { onPaint(); });
            return false;
        }
    } watch;
    watch.onPaint = [&] { if (painted < 0) painted = sinceClick.nsecsElapsed() / 1e6; };
    app->panel().installEventFilter(&watch);
    QObject::connect(app->tray(), &QSystemTrayIcon::activated, [&] { sinceClick.start(); });
    const QPoint icon = app->tray()->geometry().center();
    QProcess::execute("xdotool", {"mousemove", QString::number(icon.x()), QString::number(icon.y()), "click", "1"});
    waitFor("the panel", [&] { return painted >= 0; }, 30000);
    print("click_to_panel_painted", painted, "ms");

    LatencyProbe probe;
    AppModel& model = app->model();
    probe.start();
    model.startScan();
    waitFor("the scan", [&] { return model.phase() == AppModel::Phase::idle; }, 600000);
    print("scan_worst_event_loop_lateness", probe.stop(), "ms");
    std::printf("scan_targets %zu\n", model.targets().size());

    QTest::qWait(1000);
    print("idle_rss_after_scan", statusKilobytes("VmRSS:") / 1024.0, "MB");
    // A plain event loop, as the application runs it: QTest::qWait would wake it every 10 ms
    // itself. Every event handed to an object meanwhile is counted, so a timer or a poll
    // that wakes the idle application shows by name.
    struct EventCount : QObject {
        std::map<std::string, int> byKind;
        bool eventFilter(QObject* watched, QEvent* event) override {
            ++byKind[std::string(watched->metaObject()->className()) + "/" + std::to_string(event->type())];
            return false;
        }
    } events;
    QEventLoop idle;
    QTimer::singleShot(10000, &idle, &QEventLoop::quit);
    application.installEventFilter(&events);
    const double cpuBefore = cpuSeconds();
    idle.exec();
    const double cpuIdle = cpuSeconds() - cpuBefore;
    application.removeEventFilter(&events);
    print("idle_cpu_over_10s", cpuIdle / 10.0 * 100.0, "%");
    int wakeups = 0;
    for (const auto& [kind, count] : events.byKind) {
        wakeups += count;
        std::fprintf(stderr, "idle event %s x%d\n", kind.c_str(), count);
    }
    print("idle_events_over_10s", wakeups, "");

    probe.start();
    model.run(false, false);
    waitFor("the clean", [&] { return model.phase() == AppModel::Phase::done; }, 600000);
    print("clean_worst_event_loop_lateness", probe.stop(), "ms");
    print("clean_freed", model.lastReport() ? model.lastReport()->freedBytes / 1048576.0 : 0, "MB");
    return 0;
}
