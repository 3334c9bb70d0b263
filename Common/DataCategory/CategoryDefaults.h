#pragma once
// The constant categories and extension lists that the program builds at start-up.

#include <array>
#include <string_view>

#include "Common/DataCategory/DlpCategory.h"

namespace Zelmarik {

// The catch-all category: identifier AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA, AllData set.
const CDlpCategory& AllDataCategory();

// Extensions of documents whose content is examined.
inline constexpr std::array<std::u16string_view, 34> ContentExtensions = {
    u".txt",  u".xml",  u".html", u".htm",  u".rtf",  u".zip",  u".csv",  u".pdf",  u".doc",
    u".docx", u".docm", u".xls",  u".xlsx", u".xlsm", u".ppt",  u".pptx", u".pptm", u".pps",
    u".ppsx", u".ppsm", u".msg",  u".eml",  u".one",  u".odt",  u".ods",  u".odp",  u".md",
    u".epub", u".png",  u".tiff", u".tif",  u".jpg",  u".jpeg", u".jpe"};

// The content extensions and the archive, drawing and design formats, without the images.
const CDlpCategory::ExtensionSet& DefaultPropertiesExtensions();

}  // namespace Zelmarik
