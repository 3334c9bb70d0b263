#include "frontend/terminal/TerminalUi.h"

#include <gtest/gtest.h>

namespace {

// A narrow terminal gets fewer fields, never a field cut in two; the status takes what is left,
// shortened from its front.
TEST(ProgressLine, FitsWholeFieldsAndShortensTheStatusFromItsFront) {
    const std::vector<std::string> fields = {"[##########..........]", "50%", "1.0 MiB of 2.0 MiB",
                                             "3.0 MiB/s", "0:00:01 left"};
    const std::string all =
        "[##########..........]  50%  1.0 MiB of 2.0 MiB  3.0 MiB/s  0:00:01 left";
    const std::string status = "Extracting file: /home/ana/reports/2021/a.txt";
    for (const auto& [width, bare, withStatus] :
         std::vector<std::tuple<std::size_t, std::string, std::string>>{
             {120, all, all + "  " + status},
             {79, all, all},  // no room for a status worth showing
             {40, "[##########..........]  50%", "[##########..........]  50%  ...21/a.txt"},
             {20, "", "...eports/2021/a.txt"}}) {
        EXPECT_EQ(terminal::FitProgressLine(fields, "", width), bare) << width;
        EXPECT_EQ(terminal::FitProgressLine(fields, status, width), withStatus) << width;
    }
    EXPECT_EQ(terminal::ByteCount(1536), "1.5 KiB");
}

}  // namespace
