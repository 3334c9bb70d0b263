#include <memory>

#include "tests/Shared/Tagger/TaggerTestSupport.h"

namespace tests {
namespace {

using Zelmarik::CTagger;
using Zelmarik::CTaggerPrecomputed;

// Each write replaces the stream with the identifiers in container order; an empty container
// still leaves a stream, of length 0. The file's times and content stay.
TEST_F(TaggerTest, StreamHoldsTheIdentifiersOfTheLastWriteOnly) {
    const std::u16string file = MakeFile(u"again.txt");
    ASSERT_FALSE(HasStream(file));
    const platform::FileStamps before = StampsOf(file);
    for (const std::vector<std::uint32_t>& seeds :
         {std::vector<std::uint32_t>{}, {90, 3, 200, 41}, {5}, {}}) {
        const Zelmarik::CCategoryContainer categories = Categories(seeds);
        CTagger::WriteThrow(file.c_str(), categories, nullptr);
        EXPECT_EQ(StreamOf(file), Records(categories)) << seeds.size();
    }
    ExpectSameStamps(before, StampsOf(file));
    std::uint64_t size = 0;
    EXPECT_TRUE(platform::QueryFileSize(file, size));
    EXPECT_EQ(size, 7u);
}

TEST_F(TaggerTest, ReadOnlyFileIsTaggedAndStaysReadOnlyWithItsTimes) {
    const std::u16string file = MakeFile(u"readonly.txt");
    MakeReadOnly(file);
    const std::filesystem::perms permissions = PermissionsOf(file);
    const platform::FileStamps before = StampsOf(file);

    const Zelmarik::CCategoryContainer categories = Categories({11, 12, 13});
    CTagger::WriteThrow(file.c_str(), categories, nullptr);

    EXPECT_EQ(StreamOf(file), Records(categories));
    EXPECT_EQ(PermissionsOf(file), permissions);
    ExpectSameStamps(before, StampsOf(file));

    // Where the system denies the open (not so for root under Wine), the bit is cleared only
    // while the stream is open; else the file is opened as it is.
    platform::TagHandle handle = platform::kInvalidTagHandle;
    const bool denied = platform::OpenTaggedFile(file, handle) == platform::kErrorAccessDenied;
    if (!denied) {
        platform::CloseTaggedFile(handle);
    }
    Zelmarik::STaggerContext* context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    EXPECT_EQ(IsWritable(file), denied);
    TaggerProbe::TagFileClose(context);
    EXPECT_EQ(PermissionsOf(file), permissions);
}

// A caller's object that tells when it goes.
class CountedPrecomputed : public CTaggerPrecomputed {
public:
    explicit CountedPrecomputed(int& released) : released_(released) {}
    ~CountedPrecomputed() override { ++released_; }

private:
    int& released_;
};

// A caller's handle is used and stays open; without one the file is opened. Either way the
// caller's object is released.
TEST_F(TaggerTest, PrecomputedHandleIsUsedAndTheObjectReleased) {
    const std::u16string file = MakeFile(u"handle.txt");
    platform::TagHandle handle = platform::kInvalidTagHandle;
    ASSERT_EQ(platform::OpenTaggedFile(file, handle), platform::kErrorSuccess);
    for (const Zelmarik::TaggerHandle given :
         {handle, Zelmarik::kNoTaggerHandle, Zelmarik::kFailedTaggerHandle}) {
        int released = 0;
        auto precomputed = std::make_unique<CountedPrecomputed>(released);
        precomputed->FileHandle = given;
        const Zelmarik::CCategoryContainer categories =
            Categories({static_cast<std::uint32_t>(given) & 0xFF, 6});
        CTagger::WriteThrow(file.c_str(), categories, std::move(precomputed));
        EXPECT_EQ(released, 1);
        EXPECT_EQ(StreamOf(file), Records(categories));
        if (given == handle) {
            platform::FileStamps stamps;
            EXPECT_EQ(platform::ReadFileStamps(handle, stamps), platform::kErrorSuccess);
            platform::CloseTaggedFile(handle);
        }
    }
}

// An opened context appends each write; on close it deletes the stream or writes the saved
// attributes back by path when asked.
TEST_F(TaggerTest, OpenedContextAppendsAndCloseDoesWhatItIsAsked) {
    const std::u16string file = MakeFile(u"context.txt");
    Zelmarik::STaggerContext* context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    ASSERT_NE(context, nullptr);
    CTagger::TagFileWrite(context, Categories({1, 2, 3}));
    CTagger::TagFileWrite(context, Categories({4}));
    TaggerProbe::TagFileClose(context);
    EXPECT_EQ(StreamOf(file), Records(Categories({1, 2, 3, 4})));

    context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    context->DeleteStreamOnClose = true;
    TaggerProbe::TagFileClose(context);
    EXPECT_FALSE(HasStream(file));

    readOnly_.push_back(file);
    context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    context->RevertTimes = false;
    context->RevertAttributes = true;
    context->Attributes = platform::kFileAttributeReadOnly;
    TaggerProbe::TagFileClose(context);
    EXPECT_FALSE(IsWritable(file));

    TaggerProbe::TagFileClose(nullptr);  // nothing to do, and no crash
}

}  // namespace
}  // namespace tests
