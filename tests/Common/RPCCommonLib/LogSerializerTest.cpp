#include "Common/RPCCommonLib/LogSerializer.h"

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "Common/Common/DebugLog.h"

namespace {

class Named : public Zelmarik::IDebugLog {
public:
    explicit Named(std::u16string name) : name_(std::move(name)) {}
    std::u16string DebugLog() const override { return name_; }

private:
    std::u16string name_;
};

TEST(CommaContainerDebugLog, SeparatesEveryElementButTheLast) {
    Concurrent::ResourceOwner<std::list<Named>> owner;
    auto text = [&owner] {
        return Zelmarik::CLogSerializer::CommaContainerDebugLog(owner, u"-none-");
    };
    auto append = [&owner](const char16_t* name) {
        Concurrent::ExclusiveResourceHolder<std::list<Named>>(owner.Keeper)->emplace_back(name);
    };
    EXPECT_EQ(text(), u"-none-");
    append(u"one");
    EXPECT_EQ(text(), u"one");
    append(u"");
    append(u"three");
    EXPECT_EQ(text(), u"one, \n, \nthree");
    EXPECT_EQ(Zelmarik::CLogSerializer::Decimal(-42), u"-42");
}

}  // namespace
