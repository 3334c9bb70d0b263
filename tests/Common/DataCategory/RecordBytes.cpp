#include <gtest/gtest.h>

#include "tests/Common/DataCategory/RecordBytes.h"

namespace tests {

using Zelmarik::CContentResult;

CContentResult::FileResult SampleFileResult(std::u16string_view name) {
    CContentResult::FileResult file;
    file.RelativeName = name;

    CContentResult::Definition definition;
    definition.Id = 42;
    definition.Name = u"SSN";
    CContentResult::ElementResult element;
    element.Kind = 2;
    element.Matches.push_back({});
    element.Matches[0].First = u"123";
    element.Matches[0].Second = u"x";
    element.Matches[0].Count = 2;
    element.TotalCount = 5;
    definition.Elements.push_back(element);
    definition.ContentHitCount = 9;
    definition.Categories.push_back(SampleId());
    file.Definitions.push_back(definition);

    CContentResult::MetadataProperty author;
    author.Name = u"Author";
    author.Value = u"Ann";
    file.FoundMetadata.push_back(author);

    CContentResult::CContentMetadataResult metadata;
    metadata.Number = 1;
    metadata.Text = u"m";
    CContentResult::MetadataProperty property;
    property.Name = u"k";
    property.Value = u"v";
    metadata.Properties.push_back(property);
    file.Metadata.Results.push_back(metadata);

    CContentResult::CContentSummarizerResult summary;
    summary.Text = u"s";
    summary.Number1 = 1;
    summary.Number2 = 2;
    summary.Number3 = 3;
    CContentResult::CContentSummarizerSubResult sub;
    sub.First = u"f";
    sub.Second = u"g";
    summary.SubResults.push_back(sub);
    CContentResult::CContentGroupResult group;
    group.Number = 4;
    group.Text = u"grp";
    group.Summaries.push_back(summary);
    file.Core.Groups.push_back(group);
    return file;
}

Bytes SampleFileResultRecord(std::u16string_view name) {
    ByteBuilder b;
    b.Str(name);
    // Definitions: Id, Name, Elements, ContentHitCount, Categories.
    b.U32(1).U64(42).Str(u"SSN");
    b.U32(1).U32(2).U32(1).Str(u"123").Str(u"x").U32(2).U32(5);
    b.U64(9).U32(1).Raw(kSampleIdBytes);
    // FoundMetadata.
    b.U32(1).Str(u"Author").Str(u"Ann");
    // Metadata: Results with Number, Text, Properties.
    b.U32(1).U32(1).Str(u"m").U32(1).Str(u"k").Str(u"v");
    // Core: Groups with Number, Text, Summaries (Text, three numbers, SubResults).
    b.U32(1).U32(4).Str(u"grp");
    b.U32(1).Str(u"s").U32(1).U32(2).U32(3).U32(1).Str(u"f").Str(u"g");
    return b.Data();
}

CContentResult SampleTree() {
    CContentResult tree;
    auto& processing = tree.ProcessingResult.GetOrCreate();
    processing.Number1 = 5;
    processing.Flag = true;
    processing.Number2 = 6;
    processing.Text = u"proc";
    processing.Files.push_back(SampleFileResult());
    tree.Number1 = 7;
    tree.Text = u"tree";
    tree.Number2 = -2;
    tree.Cache.ZelmarikState = 0;
    tree.Cache.MetadataState = 1;
    tree.Cache.TovrinxState = 4;
    tree.Mark = 0x80;
    tree.Files.push_back(SampleFileResult(u"b.txt"));
    tree.Files.push_back(SampleFileResult(u"c.txt"));
    return tree;
}

Bytes SampleTreeRecord() {
    ByteBuilder b;
    b.U8(1).I32(5).I32(6).Str(u"proc").U32(1).Append(SampleFileResultRecord());
    b.U32(7).Str(u"tree").I32(-2).I32(0).I32(1).I32(4).U8(0x80);
    b.U32(2).Append(SampleFileResultRecord(u"b.txt")).Append(SampleFileResultRecord(u"c.txt"));
    return b.Data();
}

Zelmarik::CDlpCategory SampleCategory() {
    Zelmarik::CDlpCategory category;
    category.Id = SampleId();
    category.Kind = 2;
    category.Priority = 3;
    category.Name = u"Payroll";
    category.SecondaryName = u"HR";
    category.OpaqueByte = 0x5A;
    category.Marked = true;
    category.OpaqueNumber1 = 0x1122334455667788;
    category.OpaqueNumber2 = 0xAABBCCDD;
    category.OpaqueNumber3 = 7;
    category.Content.GetOrCreate() = SampleTree();
    category.DisplayNumber = 12;
    category.Extensions.emplace();
    category.Extensions->Selector = 9;
    category.Extensions->Extensions = {u".doc", u".Doc", u".pdf"};
    category.Flags.Unified = true;
    category.Flags.HasPriority = true;
    category.Flags.Flag5 = true;
    category.Flags.Flag7 = true;
    return category;
}

Bytes SampleCategoryRecord() {
    ByteBuilder b;
    b.Raw(kSampleIdBytes).I32(3).I32(2).Str(u"Payroll").Str(u"HR");
    b.U64(0x1122334455667788).U32(0xAABBCCDD).U32(7).U64(12).U8(0x5A);
    b.U8(1).Append(SampleTreeRecord());
    // The set in unit order: '.D' (0x44) before '.d' (0x64) before '.p'.
    b.U8(1).U32(9).U32(3).Str(u".Doc").Str(u".doc").Str(u".pdf");
    b.Raw({1, 0, 1, 0, 1, 0, 1});
    return b.Data();
}

}  // namespace tests
