// Parsing a category block: time per byte should stay flat from 1 KiB to 64 MiB of records.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "Common/Common/Endian.h"
#include "Common/DataCategory/CategoryContainer.h"

namespace {

using Zelmarik::CContentResult;
using Zelmarik::CDlpCategory;

// A category as the classifier leaves it: one examined file with a definition, matches and
// metadata, about a kilobyte once written.
CDlpCategory SampleCategory() {
    CDlpCategory category;
    category.Kind = 2;
    category.Name = u"Payroll records";
    category.SecondaryName = u"Human resources";
    category.Extensions.emplace().Extensions = {u".docx", u".xlsx", u".pdf"};

    CContentResult::FileResult file;
    file.RelativeName = u"Finance\\2026\\salaries-november.xlsx";
    CContentResult::Definition definition;
    definition.Name = u"Social security number";
    CContentResult::ElementResult element;
    element.Kind = 3;
    for (int i = 0; i < 8; ++i) {
        CContentResult::ElementMatch match;
        match.First = u"123-45-6789";
        match.Second = u"Sheet1!B12";
        match.Count = 1;
        element.Matches.push_back(match);
    }
    definition.Elements.push_back(element);
    definition.Categories.resize(2);
    file.Definitions.push_back(definition);
    CContentResult::MetadataProperty author;
    author.Name = u"Author";
    author.Value = u"Payroll office";
    file.FoundMetadata.push_back(author);
    category.Content.GetOrCreate().Files.push_back(file);
    return category;
}

// A block of about `size` bytes: the length, the count, and copies of one record with
// identifiers of their own.
std::vector<std::uint8_t> MakeBlock(std::size_t size) {
    Zelmarik::CCategoryContainer one;
    one.Add(SampleCategory());
    const Zelmarik::Blob blob = Zelmarik::WriteCategoryBlock(one);
    const std::uint8_t* record = blob.Data() + 8;
    const std::size_t recordSize = blob.Size() - 8;

    const std::size_t count = size > recordSize ? size / recordSize : 1;
    std::vector<std::uint8_t> block(8 + count * recordSize);
    Zelmarik::StoreLittle<std::uint32_t>(block.data(), static_cast<std::uint32_t>(block.size()));
    Zelmarik::StoreLittle<std::uint32_t>(block.data() + 4, static_cast<std::uint32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t* at = block.data() + 8 + i * recordSize;
        std::memcpy(at, record, recordSize);
        Zelmarik::StoreLittle<std::uint32_t>(at, static_cast<std::uint32_t>(i));
    }
    return block;
}

void ParseCategoryBlock(benchmark::State& state) {
    const std::vector<std::uint8_t> block = MakeBlock(static_cast<std::size_t>(state.range(0)));
    Zelmarik::CCategoryContainer container;
    for (auto _ : state) {
        const bool ok = Zelmarik::ReadCategoryBlock(block, container);
        benchmark::DoNotOptimize(ok);
        if (!ok) {
            state.SkipWithError("block refused");
            break;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * block.size()));
    state.counters["categories"] = static_cast<double>(container.Categories.size());
    state.counters["ns_per_byte"] =
        benchmark::Counter(static_cast<double>(state.iterations() * block.size()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(ParseCategoryBlock)
    ->RangeMultiplier(4)
    ->Range(1 << 10, 64 << 20)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
