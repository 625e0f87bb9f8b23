// The module's life in a process: loaded, used from threads, unloaded while they live, loaded
// again.

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "tests/module/adapter_module.h"
#include "tests/module/hosted_unit.h"
#include "tests/support/record_builder.h"

namespace orl::test {
namespace {

// A thread that outlives what it runs: it takes tasks one by one and waits between them.
class LastingThread {
  public:
    LastingThread() : thread_([this] { Serve(); }) {}
    ~LastingThread() {
        Hand({});
        thread_.join();
    }
    LastingThread(const LastingThread&) = delete;
    LastingThread& operator=(const LastingThread&) = delete;

    // Runs the task on the thread and waits for its end.
    void Run(const std::function<void()>& task) {
        Hand(task);
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !task_; });
    }

  private:
    void Hand(std::function<void()> task) {
        const std::lock_guard lock(mutex_);
        task_ = std::move(task);
        changed_.notify_all();
    }
    void Serve() {
        for (bool goesOn = true; goesOn;) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return task_.has_value(); });
            goesOn = static_cast<bool>(*task_);
            if (goesOn) {
                (*task_)();
            }
            task_.reset();
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<std::function<void()>> task_;
    std::thread thread_;
};

// Attaches a unit, enrolls a record and verifies it, also with a record that makes the matcher
// throw.
void UseModule(const DynamicLibrary& module) {
    HostedUnit unit(EngineTableOf(module));
    ASSERT_EQ(unit.Capture(BuildRecord(RandomMinutiae(5, 45))), S_OK);
    ASSERT_EQ(unit.Enroll(IdentityNumber(1)), S_OK);
    EXPECT_TRUE(unit.Verify(IdentityNumber(1)));
    ASSERT_EQ(unit.Capture(BuildRecord(RandomMinutiae(6, 2))), S_OK);
    EXPECT_FALSE(unit.Verify(IdentityNumber(1)));
}

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)

TEST(AdapterModuleLife, LeavesTheProcessWhenItIsUnloaded) {
    const std::string path = AdapterModulePath();
    {
        const DynamicLibrary module(path);
        UseModule(module);
        EXPECT_TRUE(DynamicLibrary::IsLoaded(path));
    }
    EXPECT_FALSE(DynamicLibrary::IsLoaded(path));
}

#endif

TEST(AdapterModuleLife, SurvivesBeingUnloadedWhileAThreadThatUsedItLives) {
    LastingThread thread;
    for (int round = 0; round < 3; ++round) {
        const DynamicLibrary module(AdapterModulePath());
        thread.Run([&module] { UseModule(module); });
        UseModule(module);
    }
}

TEST(AdapterModuleLife, LetsAThreadEndAfterTheModuleIsGone) {
    std::optional<LastingThread> thread(std::in_place);
    {
        const DynamicLibrary module(AdapterModulePath());
        thread->Run([&module] { UseModule(module); });
    }
    thread.reset();
    const DynamicLibrary again(AdapterModulePath());
    UseModule(again);
}

}  // namespace
}  // namespace orl::test
