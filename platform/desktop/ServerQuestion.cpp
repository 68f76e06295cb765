// libxcb knows no deadline: it waits for the greeting, and for the rest of an answer that has
// begun. So a thread waits for it, and the asker ends the connection under it. Before the server
// has let us in there is no connection to be ended; then the thread is left behind, one at most.
#include "platform/desktop/ServerQuestion.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <thread>

#include "platform/base/FaultPoint.h"
#include "platform/posix/FileSystem.h"
#include "platform/posix/processes/SignalsBlocked.h"
#include "platform/posix/sockets/Connections.h"

namespace osa::desktop {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kPatience{2};

/// One question is asked at a time: libxcb's way to the user's permission is not made for several
/// threads.
class Turn {
  public:
    /// False when the one before goes on for too long.
    bool take(Clock::time_point deadline) {
        std::unique_lock guard(lock_);
        changed_.wait_until(guard, deadline, [this] { return !isTaken_ || isLeftBehind_; });
        if (isTaken_) return false;
        isTaken_ = true;
        return true;
    }
    /// It ends some day; nobody waits for that.
    void leaveBehind() {
        const std::lock_guard guard(lock_);
        isLeftBehind_ = true;
        changed_.notify_all();
    }
    void end() {
        const std::lock_guard guard(lock_);
        isTaken_ = isLeftBehind_ = false;
        changed_.notify_all();
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool isTaken_ = false;
    bool isLeftBehind_ = false;
};

/// Stays to the end of the process, which a thread that was left behind may see.
Turn& turn() {
    static Turn& shared = *new Turn;
    return shared;
}

struct Exchange {
    std::string display;
    std::function<std::uint32_t(XServer&)> question;

    std::mutex lock;
    std::condition_variable finished;
    bool isFinished = false;
    bool isGivenUp = false;
    int descriptor = -1;  // of the connection, while it may be ended
    std::uint32_t answer = 0;

    /// False when nobody waits any more.
    bool setDescriptor(int value) {
        const std::lock_guard guard(lock);
        descriptor = value;
        return !isGivenUp;
    }
};

std::uint32_t converse(Exchange& exchange) {
    const std::unique_ptr<XServer> server = XServer::connect(exchange.display);
    if (!server) return 0;
    std::uint32_t answer = 0;
    try {
        if (exchange.setDescriptor(server->descriptor())) answer = exchange.question(*server);
    } catch (const std::bad_alloc&) {
        answer = 0;
    }
    exchange.setDescriptor(-1);
    return answer;
}

void work(const std::shared_ptr<Exchange>& exchange) {
    std::uint32_t answer = 0;
    try {
        answer = converse(*exchange);
    } catch (const std::bad_alloc&) {
        answer = 0;
    }
    const std::lock_guard guard(exchange->lock);
    exchange->answer = answer;
    exchange->isFinished = true;
    turn().end();
    exchange->finished.notify_one();
}

/// Whether the thread has finished; if not, it does so on its own.
bool waitFor(Exchange& exchange, Clock::time_point deadline) {
    std::unique_lock guard(exchange.lock);
    if (exchange.finished.wait_until(guard, deadline, [&] { return exchange.isFinished; }))
        return true;
    exchange.isGivenUp = true;
    turn().leaveBehind();
    if (exchange.descriptor >= 0) posix::endConnection(exchange.descriptor);
    return false;
}

}  // namespace

std::uint32_t askServer(std::function<std::uint32_t(XServer&)> question) {
    const Clock::time_point deadline = Clock::now() + kPatience;
    const auto exchange = std::make_shared<Exchange>();
    exchange->display = posix::environment("DISPLAY");
    exchange->question = std::move(question);
    if (exchange->display.empty() || faultPoint() || !turn().take(deadline)) return 0;
    std::thread thread;
    try {
        const posix::SignalsBlocked forTheThread;
        thread = std::thread(work, exchange);
    } catch (const std::exception&) {  // no thread, or no memory for it
        turn().end();
        return 0;
    }
    if (!waitFor(*exchange, deadline)) {
        thread.detach();
        return 0;
    }
    thread.join();
    return exchange->answer;
}

}  // namespace osa::desktop
