#include "Common/RPCCommonLib/LogSerializer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <list>
#include <string>
#include <thread>

#include "Common/Common/DebugLog.h"

namespace {

using Zelmarik::CLogSerializer;

class Named : public Zelmarik::IDebugLog {
public:
    explicit Named(std::u16string name) : name_(std::move(name)) {}
    std::u16string DebugLog() const override { return name_; }

private:
    std::u16string name_;
};

void Fill(Concurrent::ResourceOwner<std::list<Named>>& owner,
          std::initializer_list<const char16_t*> names) {
    Concurrent::ExclusiveResourceHolder<std::list<Named>> writer(owner.Keeper);
    for (const char16_t* name : names) {
        writer->emplace_back(name);
    }
}

TEST(CommaContainerDebugLog, SeparatesEveryElementButTheLast) {
    Concurrent::ResourceOwner<std::list<Named>> owner;
    EXPECT_EQ(CLogSerializer::CommaContainerDebugLog(owner, u"-none-"), u"-none-");
    Fill(owner, {u"one"});
    EXPECT_EQ(CLogSerializer::CommaContainerDebugLog(owner, u"-none-"), u"one");
    Fill(owner, {u"", u"three"});
    EXPECT_EQ(CLogSerializer::CommaContainerDebugLog(owner, u"-none-"), u"one, \n, \nthree");
}

TEST(CommaContainerDebugLog, PrintsWhileWritersAppend) {
    Concurrent::ResourceOwner<std::list<Named>> owner;
    std::atomic<bool> malformed{false};
    std::thread writer([&] {
        for (int i = 0; i < 300; ++i) {
            Fill(owner, {u"x"});
        }
    });
    for (int i = 0; i < 300; ++i) {
        const std::u16string text = CLogSerializer::CommaContainerDebugLog(owner, u"-");
        // Either the fallback or "x" items: a torn list would show up as a stray separator.
        if (text != u"-" && (text.front() != u'x' || text.back() != u'x')) {
            malformed = true;
        }
    }
    writer.join();
    EXPECT_FALSE(malformed);
    EXPECT_EQ(CLogSerializer::CommaContainerDebugLog(owner, u"-").size(), 300u + 299u * 3u);
}

TEST(LogSerializerDecimal, PrintsSignedNumbers) {
    EXPECT_EQ(CLogSerializer::Decimal(0), u"0");
    EXPECT_EQ(CLogSerializer::Decimal(-42), u"-42");
    EXPECT_EQ(CLogSerializer::Decimal(std::numeric_limits<std::int64_t>::min()),
              u"-9223372036854775808");
}

}  // namespace
