#include <memory>

#include "tests/Shared/Tagger/TaggerTestSupport.h"

namespace tests {
namespace {

using Zelmarik::CTagger;
using Zelmarik::CTaggerPrecomputed;

TEST_F(TaggerTest, StreamHoldsTheIdentifiersInContainerOrder) {
    for (const std::vector<std::uint32_t>& seeds :
         {std::vector<std::uint32_t>{}, {5}, {90, 3, 200, 41}}) {
        SCOPED_TRACE(seeds.size());
        const std::u16string file =
            MakeFile(u"f" + std::u16string(1, static_cast<char16_t>(u'0' + seeds.size())));
        ASSERT_FALSE(HasStream(file));

        const Zelmarik::CCategoryContainer categories = Categories(seeds);
        CTagger::WriteThrow(file.c_str(), categories, nullptr);

        // An empty container still leaves a stream, of length 0.
        EXPECT_EQ(StreamOf(file), Records(categories));
        EXPECT_EQ(StreamOf(file).size(), 16 * seeds.size());
    }
}

TEST_F(TaggerTest, AnOldStreamIsReplacedNotMerged) {
    const std::u16string file = MakeFile(u"again.txt");
    CTagger::WriteThrow(file.c_str(), Categories({1, 2, 3}), nullptr);
    const Zelmarik::CCategoryContainer later = Categories({9});
    CTagger::WriteThrow(file.c_str(), later, nullptr);
    EXPECT_EQ(StreamOf(file), Records(later));

    CTagger::WriteThrow(file.c_str(), Categories({}), nullptr);
    EXPECT_TRUE(StreamOf(file).empty());
}

TEST_F(TaggerTest, TimesAndContentOfTheFileStay) {
    const std::u16string file = MakeFile(u"times.txt");
    const platform::FileStamps before = StampsOf(file);
    CTagger::WriteThrow(file.c_str(), Categories({7, 8}), nullptr);
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
    EXPECT_FALSE(IsWritable(file));
    EXPECT_EQ(PermissionsOf(file), permissions);
    ExpectSameStamps(before, StampsOf(file));

    // Where the system denies the open (not so for root under Wine), the bit is cleared while
    // the stream is open and the attributes found are kept; else the file is opened as it is.
    platform::TagHandle handle = platform::kInvalidTagHandle;
    const bool denied = platform::OpenTaggedFile(file, handle) == platform::kErrorAccessDenied;
    if (!denied) {
        platform::CloseTaggedFile(handle);
    }
    Zelmarik::STaggerContext* context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    EXPECT_EQ(context->Attributes & platform::kFileAttributeReadOnly, denied ? 1u : 0u);
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

TEST_F(TaggerTest, PrecomputedHandleStaysOpenAndTheObjectIsReleased) {
    const std::u16string file = MakeFile(u"handle.txt");
    platform::TagHandle handle = platform::kInvalidTagHandle;
    ASSERT_EQ(platform::OpenTaggedFile(file, handle), platform::kErrorSuccess);

    int released = 0;
    auto precomputed = std::make_unique<CountedPrecomputed>(released);
    precomputed->FileHandle = handle;
    const Zelmarik::CCategoryContainer categories = Categories({4, 6});
    CTagger::WriteThrow(file.c_str(), categories, std::move(precomputed));

    EXPECT_EQ(released, 1);
    EXPECT_EQ(StreamOf(file), Records(categories));
    platform::FileStamps stamps;
    EXPECT_EQ(platform::ReadFileStamps(handle, stamps), platform::kErrorSuccess);
    platform::CloseTaggedFile(handle);
}

TEST_F(TaggerTest, PrecomputedWithoutAHandleOpensTheFile) {
    const std::u16string file = MakeFile(u"nohandle.txt");
    for (const Zelmarik::TaggerHandle none :
         {Zelmarik::kNoTaggerHandle, Zelmarik::kFailedTaggerHandle}) {
        int released = 0;
        auto precomputed = std::make_unique<CountedPrecomputed>(released);
        precomputed->FileHandle = none;
        const Zelmarik::CCategoryContainer categories =
            Categories({static_cast<std::uint32_t>(none)});
        CTagger::WriteThrow(file.c_str(), categories, std::move(precomputed));
        EXPECT_EQ(released, 1);
        EXPECT_EQ(StreamOf(file), Records(categories));
    }
}

TEST_F(TaggerTest, OpenedContextWritesTheStreamAndAppendsToIt) {
    const std::u16string file = MakeFile(u"context.txt");
    Zelmarik::STaggerContext* context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    ASSERT_NE(context, nullptr);

    CTagger::TagFileWrite(context, Categories({1, 2, 3}));
    EXPECT_EQ(context->Size, 48u);
    // Writing again appends at the end of the stream.
    CTagger::TagFileWrite(context, Categories({4}));
    EXPECT_EQ(context->Size, 64u);
    TaggerProbe::TagFileClose(context);
    EXPECT_EQ(StreamOf(file), Records(Categories({1, 2, 3, 4})));
}

TEST_F(TaggerTest, CloseDeletesTheStreamOrRestoresAttributesWhenAsked) {
    const std::u16string file = MakeFile(u"flags.txt");
    Zelmarik::STaggerContext* context = TaggerProbe::TagFileOpen(file.c_str(), nullptr);
    CTagger::TagFileWrite(context, Categories({1}));
    context->DeleteStreamOnClose = true;
    TaggerProbe::TagFileClose(context);
    EXPECT_FALSE(HasStream(file));

    // Without saved times the attributes are written back by path.
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
