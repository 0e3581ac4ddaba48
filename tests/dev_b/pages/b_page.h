// A stage for tests of the B family's pages.
#pragma once

#include "dev_b/pages/vkt610b_pages.h"
#include "tests/support/home_stage.h"
#include "toolkit/core/text.h"

class b_page : public home_stage {
  protected:
    void SetUp() override {
        home_stage::SetUp();
        choose(vkt610b_pages);
    }
    /// The register's bytes in the listing, least significant first, without the checksum: "03000000".
    std::string listed(int reg) const {
        const std::string head = tk_format("寄存器 %02X 的配置指令: ", static_cast<unsigned>(reg));
        const std::string text = code();
        const std::size_t at = text.find(head);
        return at == std::string::npos ? "" : text.substr(at + head.size() + 10, 8);
    }
};

/// Tests that hold for both CAN FD channels: the parameter is the channel's digit.
class b_channel : public b_page, public testing::WithParamInterface<char> {
  protected:
    /// A text with the channel's number for every '#'.
    static std::string mine(std::string text) {
        for (char& c : text)
            if (c == '#') c = GetParam();
        return text;
    }
};

/// Name of a test whose parameter is a channel's digit.
inline std::string channel_name(const testing::TestParamInfo<char>& one) {
    return std::string("channel_") + one.param;
}
