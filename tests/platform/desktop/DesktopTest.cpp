// The front process and activation on an X server whose window manager the test plays.
#include "platform/desktop/Desktop.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "platform/posix/sockets/Connections.h"
#include "tests/support/Test.h"

namespace osa::desktop {
namespace {

struct VirtualServer {
    VirtualServer()
        : output(popen("echo $$; exec setpriv --pdeathsig KILL Xvfb -displayfd 1 -noreset "
                       "-screen 0 64x64x24 -nolisten tcp 2>/dev/null",
                       "r")) {
        int number = 0;
        if (fscanf(output, "%d %d", &process, &number) == 2) display = ":" + std::to_string(number);
    }
    ~VirtualServer() {
        kill(process, SIGTERM);
        pclose(output);
    }
    FILE* output;
    pid_t process = 0;
    std::string display;
};

class Manager {
  public:
    explicit Manager(const std::string& display)
        : server_(xcb_connect(display.c_str(), nullptr)),
          root_(xcb_setup_roots_iterator(xcb_get_setup(server_)).data->root) {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(server_, root_, XCB_CW_EVENT_MASK, &events);
    }
    ~Manager() { xcb_disconnect(server_); }

    xcb_atom_t atom(const std::string& name) {
        auto* const reply = xcb_intern_atom_reply(
            server_, xcb_intern_atom(server_, 0, name.size(), name.c_str()), nullptr);
        const xcb_atom_t found = reply->atom;
        free(reply);
        return found;
    }
    void set(const char* name, xcb_atom_t type, const std::vector<std::uint32_t>& values,
             xcb_window_t window = 0) {
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window == 0 ? root_ : window,
                            atom(name), type, 32, values.size(), values.data());
        sync();
    }
    xcb_window_t window(std::uint32_t process, const std::string& machine) {
        const xcb_window_t made = xcb_generate_id(server_);
        xcb_create_window(server_, 0, made, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        if (!machine.empty())
            xcb_change_property(server_, XCB_PROP_MODE_REPLACE, made, XCB_ATOM_WM_CLIENT_MACHINE,
                                XCB_ATOM_STRING, 8, machine.size(), machine.data());
        if (process != 0) set("_NET_WM_PID", XCB_ATOM_CARDINAL, {process}, made);
        return made;
    }
    void sync() { free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr)); }
    /// Window, source and window active before of the last request to activate.
    std::vector<std::uint32_t> requested() {
        sync();
        std::vector<std::uint32_t> last;
        while (auto* const event = xcb_poll_for_event(server_)) {
            auto* const message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                message->type == atom("_NET_ACTIVE_WINDOW")) {
                const auto& data = message->data.data32;
                last = {message->window, data[0], data[2]};
                EXPECT_NE(data[1], 0u) << "time";
            }
            free(event);
        }
        return last;
    }

  private:
    xcb_connection_t* server_;
    xcb_window_t root_;
};

TEST(Desktop, FrontProcessAndActivation) {
    const VirtualServer server;
    ASSERT_FALSE(server.display.empty()) << "Xvfb did not start";
    setenv("DISPLAY", server.display.c_str(), 1);
    EXPECT_EQ(frontProcess().status(), procNotFound) << "no window manager has ever run";
    EXPECT_EQ(bringToFront(77).status(), kCannotSetFrontProcessErr);

    Manager manager(server.display);
    const std::string here = posix::hostName();
    const xcb_window_t older = manager.window(77, here), newer = manager.window(77, here),
                       foreign = manager.window(77, "elsewhere"), nowhere = manager.window(77, ""),
                       other = manager.window(78, here + std::string(1, '\0')),
                       unnumbered = manager.window(0, here);
    using Front = std::pair<xcb_window_t, std::uint32_t>;
    for (const auto& [active, process] :
         {Front{older, 77}, Front{other, 78}, Front{foreign, 0}, Front{nowhere, 0},
          Front{unnumbered, 0}, Front{0, 0}, Front{0x1FFFFFFF, 0}}) {
        manager.set("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, {active});
        const auto front = frontProcess();
        EXPECT_EQ(front.ok() ? *front : 0, process) << active;
    }
    manager.set("_NET_ACTIVE_WINDOW", XCB_ATOM_CARDINAL, {older});
    EXPECT_EQ(frontProcess().status(), procNotFound) << "a property of another type";

    manager.set("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, {other});
    std::vector<std::uint32_t> windows(200, unnumbered);
    windows.insert(windows.begin(), {older, newer, foreign, nowhere});
    manager.set("_NET_CLIENT_LIST", XCB_ATOM_WINDOW, windows);
    EXPECT_EQ(bringToFront(77).status(), kCannotSetFrontProcessErr) << "activation not supported";
    manager.set("_NET_SUPPORTED", XCB_ATOM_ATOM, {1, 2, manager.atom("_NET_ACTIVE_WINDOW")});
    using Request = std::vector<std::uint32_t>;
    EXPECT_EQ(bringToFront(77).status(), noErr);
    EXPECT_EQ(manager.requested(), (Request{newer, 1, other}));
    manager.set("_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW, {newer, 0x1FFFFFFF, older, foreign});
    EXPECT_EQ(bringToFront(77).status(), noErr);
    EXPECT_EQ(manager.requested(), (Request{older, 1, other}));
    EXPECT_EQ(bringToFront(78).status(), kCannotSetFrontProcessErr);
    EXPECT_EQ(bringToFront(0).status(), kCannotSetFrontProcessErr);
    EXPECT_EQ(manager.requested(), Request{});
    std::vector<std::thread> askers;
    for (int i = 0; i < 4; ++i)
        askers.emplace_back([] { EXPECT_EQ(*frontProcess(), 78u) << "on several threads"; });
    for (std::thread& each : askers) each.join();
    setenv("DISPLAY", (server.display + ".7").c_str(), 1);
    EXPECT_EQ(frontProcess().status(), procNotFound) << "no such screen";
}

/// Neither asks longer than it may; the second question after one that is still waiting not at all.
void expectInTime() {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(frontProcess().status(), procNotFound);
    EXPECT_EQ(bringToFront(77).status(), kCannotSetFrontProcessErr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3900));
}

TEST(Desktop, ServersThatDoNotAnswer) {
    const VirtualServer server;
    Manager manager(server.display);
    const xcb_window_t window = manager.window(77, posix::hostName());
    manager.set("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW, {window});
    unsetenv("DISPLAY");
    expectInTime();
    for (const char* const display : {"nonsense", ":59999"}) {
        setenv("DISPLAY", display, 1);
        expectInTime();
    }
    // The last two never go on: threads are left behind until their connections end.
    const std::string greeting{1, 0, 11, 0, 0, 0, 8, 0};
    for (const std::string& bytes : {greeting + std::string(32, '\xFF'),
                                     greeting + std::string(32, '\0'), greeting, std::string()}) {
        const std::string number = std::to_string(5000 + getpid());
        sockaddr_un address{AF_UNIX, ""};
        ("/tmp/.X11-unix/X" + number).copy(address.sun_path, 100);
        unlink(address.sun_path);  // a run that was killed leaves it
        const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
        ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(listener, 5), 0);
        int clients[2];
        std::thread fake([&] {
            for (int& client : clients) {
                char request[12];
                client = accept(listener, nullptr, nullptr);
                (void)recv(client, request, sizeof request, MSG_WAITALL);
                (void)send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            }
        });
        setenv("DISPLAY", (":" + number).c_str(), 1);
        expectInTime();
        shutdown(listener, SHUT_RDWR);
        fake.join();
        for (const int each : {listener, clients[0], clients[1]}) close(each);
        unlink(address.sun_path);
    }
    usleep(100'000);

    setenv("DISPLAY", server.display.c_str(), 1);
    kill(server.process, SIGSTOP);
    expectInTime();
    kill(server.process, SIGCONT);
    EXPECT_TRUE(test::comesTrue([] { return frontProcess().ok(); }))
        << "the server is asked again once it answers";
}

}  // namespace
}  // namespace osa::desktop
