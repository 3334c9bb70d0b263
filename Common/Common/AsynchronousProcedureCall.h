#pragma once
// Asynchronous procedure calls: a lookup that may block for a long time runs as a work item on
// a pool thread, and its answer stays for twenty minutes under its arguments. A caller asks the
// same question as often as it likes and is held up only by the first wait, at most
// FirstPollWait, unless it asks to wait for the answer.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Common/Common/Concurrent.h"
#include "Common/Common/RawSerializer.h"
#include "platform/WorkPool.h"

namespace Zelmarik {

// States of a task, and of SAsyncInfo::State.
enum AsyncState : std::uint32_t {
    NotStarted = 0,
    Queued = 1,
    // Also what a poll reports when its wait ran out before the answer came.
    Running = 2,
    Done = 3,
    // Only ever a result of a poll: the answer is older than ResultLifetime.
    Expired = 4,
    Failed = 5,
};

// What a caller learns of a call: the lookup's code and the state of the task.
struct SAsyncInfo : public ISerializableEx {
    SAsyncInfo() = default;
    SAsyncInfo(std::uint32_t result, std::uint32_t state) : Result(result), State(state) {}

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    std::uint32_t Result = 0;
    std::uint32_t State = NotStarted;
};

// Steady time in nanoseconds; tests put a clock of their own in.
using SteadyNow = std::int64_t (*)();
std::int64_t SteadyClockNow();

inline constexpr std::int64_t ResultLifetime = 1'200'000'000'000;  // twenty minutes
inline constexpr std::chrono::milliseconds FirstPollWait{1500};

// Stored arguments go into the lookup as views.
template <class Stored>
struct AsyncArgumentView {
    using type = Stored;
};
template <>
struct AsyncArgumentView<std::u16string> {
    using type = std::u16string_view;
};

// One call of a lookup with one set of arguments. It lives in its manager's set from its first
// request to the manager's end, and the manager does not end while its work item runs.
template <class Result, class... Stored>
class CAsyncTask {
public:
    using FunctionType = Result (*)(typename AsyncArgumentView<Stored>::type...);

    CAsyncTask(FunctionType function, std::tuple<Stored...> args, SteadyNow now)
        : Function(function), Args(std::move(args)), Now(now) {}
    CAsyncTask(const CAsyncTask&) = delete;
    CAsyncTask& operator=(const CAsyncTask&) = delete;

    // Starts the work item when there is none, waits as `wait` and FirstPoll say, and tells
    // what came of it.
    std::uint32_t Poll(bool wait) {
        if (Status == NotStarted && !Event) {
            Event = platform::WorkEvent::Create();
            if (!Event) {
                Status = Failed;
            } else {
                Status = Queued;
                if (!platform::QueueWorkItem(&CAsyncTask::WorkItem, this)) {
                    Event.reset();
                    Status = Failed;
                }
            }
        }
        std::optional<std::chrono::milliseconds> timeout;
        if (!wait) {
            timeout = FirstPoll ? FirstPollWait : std::chrono::milliseconds(0);
        }
        FirstPoll = false;
        if (!Event) {
            return Failed;
        }
        const platform::WaitOutcome outcome = Event->Wait(timeout);
        if (outcome == platform::WaitOutcome::TimedOut) {
            return Running;
        }
        if (outcome != platform::WaitOutcome::Signalled || Status != Done) {
            return Failed;
        }
        // An answer of exactly ResultLifetime is still fresh.
        return Now() - EndTime > ResultLifetime ? Expired : Done;
    }

    // Forgets the answer; the next poll queues a new work item.
    void Reset() {
        Value.reset();
        Status = NotStarted;
        StartTime = 0;
        EndTime = 0;
        FirstPoll = true;
        Event.reset();
    }

    // Blocks until a queued or running work item has finished with this task.
    void WaitForWorkItem() {
        const std::uint32_t status = Status;
        if ((status == Queued || status == Running) && Event) {
            Event->Wait(std::nullopt);
        }
    }

    // Runs on a pool thread. Touches the task only between Queued and the setting of the event,
    // which is the last thing it does.
    static std::uint32_t WorkItem(void* context) {
        if (context == nullptr) {
            return static_cast<std::uint32_t>(-1);
        }
        CAsyncTask& task = *static_cast<CAsyncTask*>(context);
        if (task.Status != Queued || !task.Event) {
            return 0;
        }
        task.Status = Running;
        task.StartTime = task.Now();
        try {
            task.Value = std::apply(
                [&task](const Stored&... args) {
                    return task.Function(typename AsyncArgumentView<Stored>::type(args)...);
                },
                task.Args);
            task.EndTime = task.Now();
            task.Status = Done;
        } catch (...) {
            // Nobody on this thread could take the failure: the poll reports it instead.
            task.Status = Failed;
        }
        task.Event->Set();
        return 0;
    }

    const FunctionType Function;
    const std::tuple<Stored...> Args;
    // The lookup's answer; empty before it arrived.
    std::optional<Result> Value;
    // Written by the pool thread and by the poll.
    std::atomic<std::uint32_t> Status{NotStarted};
    std::int64_t StartTime = 0;
    std::int64_t EndTime = 0;
    bool FirstPoll = true;
    // Null while no work item exists.
    std::unique_ptr<platform::WorkEvent> Event;
    const SteadyNow Now;
};

template <class Function>
struct AsyncFunctionResult;
template <class Result, class... Views>
struct AsyncFunctionResult<Result (*)(Views...)> {
    using type = Result;
};

// The tasks of one lookup, one for each set of arguments, ordered by the arguments.
template <class Function, class... Stored>
class CAsyncManager {
public:
    using Result = typename AsyncFunctionResult<Function>::type;
    using Task = CAsyncTask<Result, Stored...>;
    using TaskSet = std::map<std::tuple<Stored...>, Task>;
    static_assert(std::is_same_v<Function, typename Task::FunctionType>,
                  "the lookup takes its stored arguments as views");

    explicit CAsyncManager(Function function, SteadyNow now = &SteadyClockNow)
        : Function_(function), Now_(now) {}
    // Waits for the work items still running on tasks of this manager.
    ~CAsyncManager() {
        Concurrent::ExclusiveResourceHolder<TaskSet> tasks(Tasks.Keeper);
        for (auto& entry : tasks) {
            entry.second.WaitForWorkItem();
        }
    }
    CAsyncManager(const CAsyncManager&) = delete;
    CAsyncManager& operator=(const CAsyncManager&) = delete;

    // The final state, and the answer when there is a fresh one. A task that failed or whose
    // answer is too old is reset and polled once more.
    template <class... Given>
    std::pair<std::uint32_t, std::optional<Result>> Process(bool wait, const Given&... args) {
        Concurrent::ExclusiveResourceHolder<TaskSet> tasks(
            Tasks.Keeper, "Common\\Common\\AsynchronousProcedureCall",
            "Zelmarik::CAsyncManager<Function,Args...>::Process", __LINE__);
        std::tuple<Stored...> key{Stored(args)...};
        Task& task = tasks->try_emplace(key, Function_, key, Now_).first->second;
        std::uint32_t state = task.Poll(wait);
        if (state != Running && state != Done) {
            task.Reset();
            state = task.Poll(wait);
        }
        std::optional<Result> answer;
        if (task.Status == Done) {
            answer = task.Value;
        }
        return {state, std::move(answer)};
    }

    Concurrent::ResourceOwner<TaskSet> Tasks;

private:
    const Function Function_;
    const SteadyNow Now_;
};

// The face of the asynchronous lookups. Each operation starts from its default code, which
// stands until an answer arrives; output arguments are written only with an answer.
class IAsyncProcManager {
public:
    virtual ~IAsyncProcManager() = default;

    virtual SAsyncInfo GetIpAddress(std::u16string_view host, std::u16string& address,
                                    bool wait) = 0;
    virtual SAsyncInfo GetIpAddresses(std::u16string_view host, std::u16string& address,
                                      std::vector<std::uint32_t>& addresses, bool wait) = 0;
    virtual SAsyncInfo GetHostName(std::u16string_view address, int flags, std::u16string& name,
                                   bool wait) = 0;
    virtual SAsyncInfo GetShareLocalPath(std::u16string_view server, std::u16string_view share,
                                         std::u16string& path, bool wait) = 0;
    virtual SAsyncInfo GetVolumeRoot(std::u16string_view path, std::u16string& root, bool wait) = 0;
    virtual SAsyncInfo GetNetbiosName(std::u16string_view address, std::u16string& name,
                                      bool wait) = 0;
    virtual SAsyncInfo GetUniversalName(std::u16string_view path, std::u16string& name,
                                        bool wait) = 0;
    // The file system's flags and name, and how the call went.
    virtual std::tuple<std::uint32_t, std::u16string, SAsyncInfo> GetVolumeFileSystem(
        std::u16string_view root, bool wait) = 0;
};

}  // namespace Zelmarik
