// Whose window is active, and asking for another to be, by the Extended Window Manager Hints.
#include "platform/desktop/Desktop.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/desktop/ServerQuestion.h"
#include "platform/posix/sockets/Connections.h"

namespace osa::desktop {
namespace {

constexpr std::array<std::string_view, 5> kHintNames = {"_NET_SUPPORTED", "_NET_ACTIVE_WINDOW",
                                                        "_NET_CLIENT_LIST_STACKING",
                                                        "_NET_CLIENT_LIST", "_NET_WM_PID"};
/// Who asks for a window to be activated.
constexpr std::uint32_t kFromApplication = 1;

/// The windows of one server as its window manager tells of them.
class Windows {
  public:
    explicit Windows(XServer& server) : server_(server) {
        const auto atoms = server.atoms(kHintNames);
        supported_ = atoms[0];
        active_ = atoms[1];
        stacking_ = atoms[2];
        list_ = atoms[3];
        process_ = atoms[4];
    }

    xcb_window_t active() {
        const auto values = server_.values(server_.root(), active_, XCB_ATOM_WINDOW);
        return values.empty() ? xcb_window_t{XCB_WINDOW_NONE} : values.front();
    }

    /// 0 when it is not told, or is another machine's.
    std::uint32_t processOf(xcb_window_t window) {
        if (window == XCB_WINDOW_NONE || !isHere(window)) return 0;
        return server_.firstValues({&window, 1}, process_, XCB_ATOM_CARDINAL).front();
    }

    /// From the top, or the newest first where the order on the screen is not told.
    std::vector<xcb_window_t> ofProcess(std::uint32_t processID) {
        auto windows = server_.values(server_.root(), stacking_, XCB_ATOM_WINDOW);
        if (windows.empty()) windows = server_.values(server_.root(), list_, XCB_ATOM_WINDOW);
        std::reverse(windows.begin(), windows.end());
        const auto processes = server_.firstValues(windows, process_, XCB_ATOM_CARDINAL);
        std::vector<xcb_window_t> found;
        for (std::size_t i = 0; i < windows.size(); ++i)
            if (processes[i] == processID) found.push_back(windows[i]);
        return found;
    }

    bool activate(std::uint32_t processID) {
        const auto hints = server_.values(server_.root(), supported_, XCB_ATOM_ATOM);
        if (active_ == XCB_ATOM_NONE || std::ranges::count(hints, active_) == 0) return false;
        const auto windows = ofProcess(processID);
        const auto window =
            std::ranges::find_if(windows, [this](xcb_window_t each) { return isHere(each); });
        if (window == windows.end()) return false;
        const std::array<std::uint32_t, 5> data = {kFromApplication, server_.time(), active(), 0,
                                                   0};
        return server_.tellManager(*window, active_, data);
    }

  private:
    /// Process numbers mean nothing without the machine they were given on.
    bool isHere(xcb_window_t window) {
        const std::string host = posix::hostName();
        return !host.empty() && server_.text(window, XCB_ATOM_WM_CLIENT_MACHINE) == host;
    }

    XServer& server_;
    xcb_atom_t supported_, active_, stacking_, list_, process_;
};

}  // namespace

Result<std::uint32_t> frontProcess() {
    const std::uint32_t process = askServer([](XServer& server) {
        Windows windows(server);
        return windows.processOf(windows.active());
    });
    if (process == 0) return Failure(procNotFound);
    return process;
}

Result<void> bringToFront(std::uint32_t processID) {
    if (processID == 0) return Failure(kCannotSetFrontProcessErr);
    const std::uint32_t isDone = askServer([processID](XServer& server) -> std::uint32_t {
        return Windows(server).activate(processID) ? 1 : 0;
    });
    if (isDone == 0) return Failure(kCannotSetFrontProcessErr);
    return {};
}

}  // namespace osa::desktop
