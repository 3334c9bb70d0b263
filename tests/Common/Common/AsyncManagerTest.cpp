#include "Common/Common/AsynchronousProcedureCall.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include "tests/TestLatch.h"

namespace {

using Zelmarik::CAsyncManager;
using Zelmarik::FirstPollWait;
using Zelmarik::ResultLifetime;
using Answer = std::tuple<int, std::u16string>;
using Clock = std::chrono::steady_clock;

// Fakes are plain functions, as the lookups are: they keep their state here.
std::atomic<int> calls{0};
std::atomic<std::int64_t> fakeNow{1'000'000};
TestLatch* slowGate = nullptr;

std::int64_t FakeNow() {
    return fakeNow;
}

// Answers at once with its argument and the number of the call.
Answer Echo(std::u16string_view text) {
    const int call = ++calls;
    return {0, std::u16string(text) + u"#" + static_cast<char16_t>(u'0' + call)};
}

// Answers only once the test opens the gate.
Answer Slow(std::u16string_view text) {
    slowGate->arrive_and_wait();
    ++calls;
    return {0, std::u16string(text)};
}

Answer Failing(std::u16string_view) {
    ++calls;
    return {53, {}};
}

Answer Throwing(std::u16string_view) {
    ++calls;
    throw std::bad_alloc();
}

using TextManager = CAsyncManager<Answer (*)(std::u16string_view), std::u16string>;

class AsyncManagerTest : public testing::Test {
protected:
    void SetUp() override { calls = 0; }
};

TEST_F(AsyncManagerTest, FastLookupIsAnsweredWithinTheFirstWait) {
    TextManager manager(&Echo);
    const auto started = Clock::now();
    const auto [state, answer] = manager.Process(false, std::u16string_view(u"host"));
    EXPECT_LT(Clock::now() - started, FirstPollWait);
    EXPECT_EQ(state, Zelmarik::Done);
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(*answer, Answer(0, u"host#1"));

    // The answer stays: a second request reads it without a new call.
    EXPECT_EQ(manager.Process(false, std::u16string_view(u"host")).second, answer);
    EXPECT_EQ(calls, 1);
}

TEST_F(AsyncManagerTest, SlowLookupIsRunningUntilItAnswers) {
    TestLatch gate(2);
    slowGate = &gate;
    TextManager manager(&Slow);

    const auto started = Clock::now();
    const auto first = manager.Process(false, std::u16string_view(u"far"));
    EXPECT_GE(Clock::now() - started, FirstPollWait);
    EXPECT_EQ(first.first, Zelmarik::Running);
    EXPECT_FALSE(first.second.has_value());

    // Only the first request waits.
    const auto again = Clock::now();
    EXPECT_EQ(manager.Process(false, std::u16string_view(u"far")).first, Zelmarik::Running);
    EXPECT_LT(Clock::now() - again, FirstPollWait);

    gate.arrive_and_wait();
    const auto answered = manager.Process(true, std::u16string_view(u"far"));
    EXPECT_EQ(answered.first, Zelmarik::Done);
    EXPECT_EQ(answered.second, Answer(0, u"far"));
    EXPECT_EQ(calls, 1);
}

TEST_F(AsyncManagerTest, AnswerExpiresAfterTwentyMinutes) {
    TextManager manager(&Echo, &FakeNow);
    EXPECT_EQ(manager.Process(true, std::u16string_view(u"h")).second, Answer(0, u"h#1"));

    fakeNow += ResultLifetime;
    EXPECT_EQ(manager.Process(false, std::u16string_view(u"h")).second, Answer(0, u"h#1"));

    // One nanosecond later the old answer is not handed out: the lookup runs anew.
    fakeNow += 1;
    EXPECT_EQ(manager.Process(false, std::u16string_view(u"h")).second, Answer(0, u"h#2"));
}

// A failure code is an answer that stays; a lookup that raises fails after one retry.
TEST_F(AsyncManagerTest, FailureCodeStaysAndRaisingFailsAfterOneRetry) {
    TextManager failing(&Failing);
    EXPECT_EQ(failing.Process(false, std::u16string_view(u"x")).second, Answer(53, u""));
    EXPECT_EQ(failing.Process(false, std::u16string_view(u"x")).first, Zelmarik::Done);
    EXPECT_EQ(calls, 1);
    TextManager throwing(&Throwing);
    const auto [state, answer] = throwing.Process(false, std::u16string_view(u"x"));
    EXPECT_EQ(state, Zelmarik::Failed);
    EXPECT_FALSE(answer.has_value());
    EXPECT_EQ(calls, 3);
}

TEST_F(AsyncManagerTest, DestructionWaitsForTheRunningWorkItem) {
    TestLatch gate(2);
    slowGate = &gate;
    auto manager = std::make_unique<TextManager>(&Slow);
    ASSERT_EQ(manager->Process(false, std::u16string_view(u"late")).first, Zelmarik::Running);

    std::atomic<bool> destroyed{false};
    std::thread destroyer([&] {
        manager.reset();
        destroyed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(destroyed);
    gate.arrive_and_wait();
    destroyer.join();
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(calls, 1);
}

TEST(AsyncInfo, TwoLittleEndianWordsResultFirst) {
    const Zelmarik::SAsyncInfo info(0x01020304, Zelmarik::Expired);
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(info);
    ASSERT_EQ(blob.Size(), 12u);
    EXPECT_EQ(std::vector<std::uint8_t>(blob.Data() + 4, blob.Data() + 12),
              (std::vector<std::uint8_t>{4, 3, 2, 1, 4, 0, 0, 0}));

    Zelmarik::SAsyncInfo read;
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob.Bytes(), read));
    EXPECT_EQ(read.Result, 0x01020304u);
    EXPECT_EQ(read.State, 4u);
}

}  // namespace
