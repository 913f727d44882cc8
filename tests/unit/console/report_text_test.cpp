// Reports as text and as JSON.
#include "console/report_text.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

CReport Example() {
    return {{"file", "game.cso"},
            {"ok", false},
            {"ratio_percent", 50.0},
            {"container", {{"blocks", 3U}, {"oddities", CReport::List{}}}},
            {"problems", CReport::List{"one", "two"}},
            {"difference", nullptr}};
}

TEST(ReportText, Plain) {
    EXPECT_EQ(PlainText(Example()),
              "file: game.cso\n"
              "ok: no\n"
              "ratio percent: 50.0\n"
              "container:\n"
              "  blocks: 3\n"
              "  oddities: none\n"
              "problems:\n"
              "  one\n"
              "  two\n"
              "difference: null\n");
    EXPECT_EQ(PlainText({{"name", std::string("cut\0here", 8)}}), "name: cut\n");
}

TEST(ReportText, Json) {
    EXPECT_EQ(JsonText(Example()),
              "{\"file\":\"game.cso\",\"ok\":false,\"ratio_percent\":50.0,"
              "\"container\":{\"blocks\":3,\"oddities\":[]},\"problems\":[\"one\",\"two\"],\"difference\":null}\n");
    EXPECT_EQ(JsonText({{"name", "a\xFF\"\n"}}), "{\"name\":\"a\uFFFD\\\"\\n\"}\n") << "invalid UTF-8";
    EXPECT_EQ(JsonText({{"name", std::string("cut\0here", 8)}}), "{\"name\":\"cut\\u0000here\"}\n");
}

}  // namespace
}  // namespace vantrel
