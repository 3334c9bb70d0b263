#include "Common/DataCategory/CategoryDefaults.h"

namespace Zelmarik {
namespace {

CDlpCategory MakeAllDataCategory() {
    CDlpCategory category;
    CGuid::FromString("AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", category.Id);
    category.Flags.AllData = true;
    return category;
}

CDlpCategory::ExtensionSet MakeDefaultPropertiesExtensions() {
    static constexpr std::u16string_view kFileFormats[] = {
        u".zip",  u".rar",  u".tar",  u".gz",     u".bz2",    u".one",    u".pbix",   u".vsd",
        u".mpp",  u".dwg",  u".dwt",  u".dxf",    u".dwf",    u".rvt",    u".rfa",    u".skp",
        u".sv$",  u".pln",  u".ifc",  u".dgn",    u".sldprt", u".sldasm", u".slddrw", u".slddrt",
        u".igs",  u".iges", u".stp",  u".stl",    u".iam",    u".ipt",    u".psd",    u".ai",
        u".indd", u".aep",  u".aepx", u".prproj", u".kdbx"};
    static constexpr std::u16string_view kImages[] = {u".png", u".tiff", u".tif",
                                                      u".jpg", u".jpeg", u".jpe"};

    CDlpCategory::ExtensionSet extensions(ContentExtensions.begin(), ContentExtensions.end());
    extensions.insert(std::begin(kFileFormats), std::end(kFileFormats));
    for (const std::u16string_view image : kImages) {
        extensions.erase(std::u16string(image));
    }
    return extensions;
}

}  // namespace

// Built on first use, so that other start-up code may use them in any order.
const CDlpCategory& AllDataCategory() {
    static const CDlpCategory category = MakeAllDataCategory();
    return category;
}

const CDlpCategory::ExtensionSet& DefaultPropertiesExtensions() {
    static const CDlpCategory::ExtensionSet extensions = MakeDefaultPropertiesExtensions();
    return extensions;
}

}  // namespace Zelmarik
