// The examples of docs/wire-format.md are the vectors that the code is tested with.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/Vectors.h"

namespace {

TEST(WirePage, ShowsTheBytesThatTheCodeWrites) {
    std::ifstream page(WIRE_PAGE);
    const std::string marker = "<!-- example: ";
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with(marker)) continue;
        const std::string name = line.substr(marker.size(), line.find(" -->") - marker.size());
        std::string bytes;
        std::getline(page, line);  // the opening fence
        while (std::getline(page, line) && line != "```") {
            std::istringstream row(line.substr(0, line.find('#')));
            for (unsigned byte; row >> std::hex >> byte;) bytes += static_cast<char>(byte);
        }
        const auto& all = AllVectors();
        const auto vector = std::find_if(all.begin(), all.end(), [&](const Vector& each) { return each.name == name; });
        ASSERT_NE(vector, all.end()) << name;
        EXPECT_EQ(bytes, vector->bytes) << name;
        ++examples;
    }
    EXPECT_EQ(examples, 3);
}

}  // namespace
