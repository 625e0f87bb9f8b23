// The module's life in a process: loaded, used from threads, unloaded while they live, loaded
// again.

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/module/adapter_module.h"
#include "tests/module/hosted_unit.h"
#include "tests/support/bir_builder.h"
#include "tests/support/process_usage.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"

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

    // Hands the thread a task; it has none. Wait is for the task's end.
    void Start(const std::function<void()>& task) { Hand(task); }
    void Wait() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !task_; });
    }

    void Run(const std::function<void()>& task) {
        Start(task);
        Wait();
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

using LastingThreads = std::array<LastingThread, 3>;

// Loads, uses and unloads the module so often. The threads live on all the while and use it at
// once; one more, every tenth time, ends after the module is gone.
void LoadUseAndUnload(LastingThreads& threads, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        std::optional<LastingThread> another;
        if (round % 10 == 0) {
            another.emplace();
        }
        const DynamicLibrary module(AdapterModulePath());
        const auto use = [&module] { UseModule(module); };
        for (LastingThread& thread : threads) {
            thread.Start(use);
        }
        if (another) {
            another->Run(use);
        }
        for (LastingThread& thread : threads) {
            thread.Wait();
        }
    }
}

TEST(AdapterModuleLife, GrowsNeitherInHandlesNorInMemoryHoweverOftenItIsLoaded) {
    constexpr int kRoundsToSettle = 20;
    constexpr int kShortRounds = 60;
    constexpr int kLongRounds = 1000;  // with ORL_LONG_TESTS set
    // A round that lost only what a runtime holds back for exceptions would lose 50,000 bytes.
    constexpr std::size_t kGrowthAllowedBytes = 1'000'000;
    const int rounds = std::getenv("ORL_LONG_TESTS") == nullptr ? kShortRounds : kLongRounds;
    LastingThreads threads;
    LoadUseAndUnload(threads, kRoundsToSettle);
    const std::size_t handles = OpenHandles();
    const std::size_t bytes = PrivateBytes();
    ASSERT_GT(handles, 0U);
    ASSERT_GT(bytes, 0U);
    LoadUseAndUnload(threads, rounds);
    EXPECT_LE(OpenHandles(), handles + 2);
    if (!ORL_SANITIZED) {  // sanitizers keep what has been freed
        EXPECT_LE(PrivateBytes(), bytes + kGrowthAllowedBytes) << rounds << " rounds";
    }
}

TEST(AdapterModuleLife, IsUsedForTheFirstTimeByManyThreadsAtOnce) {
    constexpr int kRounds = 5;
    constexpr std::size_t kThreads = 8;
    for (int round = 0; round < kRounds; ++round) {
        const DynamicLibrary module(AdapterModulePath());
        std::atomic<std::size_t> ready{0};
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back([&module, &ready] {
                ++ready;
                while (ready.load() < kThreads) {
                    std::this_thread::yield();
                }
                UseModule(module);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

TEST(AdapterModuleLife, KeepsTwoCopiesOfTheModuleApart) {
    const ScratchFolder folder;
    const std::string otherPath = folder.PathOf("a_second_engine_adapter.dll");
    std::filesystem::copy_file(AdapterModulePath(), otherPath);
    const DynamicLibrary module(AdapterModulePath());
    std::optional<DynamicLibrary> other(otherPath);
    EXPECT_NE(&EngineTableOf(module), &EngineTableOf(*other));
    std::thread thread([&other] { UseModule(*other); });
    UseModule(module);
    thread.join();
    // A unit of one notices neither the other's last detach nor its end.
    HostedUnit unit(EngineTableOf(module));
    ASSERT_EQ(unit.Capture(BuildRecord(RandomMinutiae(5, 45))), S_OK);
    ASSERT_EQ(unit.Enroll(IdentityNumber(1)), S_OK);
    UseModule(*other);
    EXPECT_TRUE(unit.Verify(IdentityNumber(1)));
    other.reset();
    if (!ORL_SANITIZED) {  // sanitizers keep what has been loaded
        EXPECT_FALSE(DynamicLibrary::IsLoaded(otherPath));
    }
    EXPECT_TRUE(unit.Verify(IdentityNumber(1)));
    UseModule(module);
}

TEST(AdapterModuleLife, AttachesAFreshUnitAfterADetach) {
    const DynamicLibrary module(AdapterModulePath());
    WINBIO_ENGINE_INTERFACE& engine = EngineTableOf(module);
    WINBIO_PIPELINE pipeline = {};
    FakeStorage storage(pipeline);
    std::vector<std::uint8_t> bir = BuildBir(BuildRecord(RandomMinutiae(5, 45)));
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(engine.Attach(&pipeline), S_OK);
        PUCHAR exported = nullptr;
        SIZE_T exportedBytes = 1;
        EXPECT_EQ(engine.ExportEngineData(&pipeline, 0, &exported, &exportedBytes),
                  WINBIO_E_NO_CAPTURE_DATA);
        EXPECT_EQ(engine.GetEnrollmentStatus(&pipeline, &rejectDetail),
                  WINBIO_E_INVALID_DEVICE_STATE);
        BOOLEAN duplicate = TRUE;
        EXPECT_EQ(engine.CheckForDuplicate(&pipeline, nullptr, nullptr, &duplicate),
                  WINBIO_E_INVALID_DEVICE_STATE);
        // Leave everything behind that a unit can hold.
        EXPECT_EQ(engine.AcceptPrivateSensorTypeInfo(&pipeline, bir.data(), bir.size()), S_OK);
        EXPECT_EQ(engine.AcceptSampleData(&pipeline,
                                          reinterpret_cast<PWINBIO_BIR>(bir.data()),
                                          bir.size(),
                                          WINBIO_PURPOSE_ENROLL,
                                          &rejectDetail),
                  S_OK);
        EXPECT_EQ(engine.CreateEnrollment(&pipeline), S_OK);
        EXPECT_EQ(engine.UpdateEnrollment(&pipeline, &rejectDetail), S_OK);
        EXPECT_EQ(engine.Detach(&pipeline), S_OK);
        EXPECT_EQ(pipeline.EngineContext, nullptr);
    }
}

}  // namespace
}  // namespace orl::test
