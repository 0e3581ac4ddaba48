// What a driver is asked for. A pseudo-terminal always has eight data bits and no parity, so the bits are looked at
// on their way.
#ifndef _WIN32

#include "platform/posix/line_settings.h"

#include "port_fixture.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

DCB settings(BYTE bits, BYTE parity, BYTE stop) {
    DCB state{};
    state.BaudRate = 9600;
    state.ByteSize = bits;
    state.Parity = parity;
    state.StopBits = stop;
    return state;
}

struct control_row {
    BYTE bits, parity, stop; ///< stop: 0 is one, 1 one and a half, 2 two
    uint32_t flags;
    int64_t character_us; ///< at 9600 baud, rounded up
};
const control_row rows[] = {
    {5, 0, 0, CS5, 730},
    {5, 0, 1, CS5 | CSTOPB, 782},
    {6, 0, 0, CS6, 834},
    {7, 0, 0, CS7, 938},
    {8, 0, 0, CS8, 1042},
    {8, 0, 2, CS8 | CSTOPB, 1146},
    {8, 1, 0, CS8 | PARENB | PARODD, 1146},
    {8, 2, 0, CS8 | PARENB, 1146},
    {8, 3, 0, CS8 | PARENB | PARODD | CMSPAR, 1146},
    {8, 4, 0, CS8 | PARENB | CMSPAR, 1146},
    {7, 2, 2, CS7 | PARENB | CSTOPB, 1146},
};

TEST(line_settings, have_their_bits_and_their_time_on_the_wire) {
    for (const control_row& row : rows) {
        const DCB state = settings(row.bits, row.parity, row.stop);
        EXPECT_EQ(posix_com::line_control_bits(state), row.flags) << int{row.bits} << int{row.parity};
        EXPECT_EQ(posix_com::line_character_us(state), row.character_us) << int{row.bits} << int{row.parity};
    }
    DCB fast = settings(8, 0, 0);
    fast.BaudRate = 115200;
    EXPECT_EQ(posix_com::line_character_us(fast), 87);
    fast.fOutxCtsFlow = 1;
    EXPECT_EQ(posix_com::line_control_bits(fast), CS8 | CRTSCTS);
}

class line_state : public port_test {
  protected:
    /// What the driver holds now.
    termios2 now() {
        termios2 state{};
        const int node = ::open(line->path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        EXPECT_EQ(ioctl(node, TCGETS2, &state), 0);
        ::close(node);
        return state;
    }
};

TEST_F(line_state, an_opened_port_is_raw_and_keeps_its_rate) {
    const termios2 state = now();
    EXPECT_EQ(state.c_iflag, 0U);
    EXPECT_EQ(state.c_oflag, 0U);
    EXPECT_EQ(state.c_lflag, 0U);
    EXPECT_EQ(state.c_cflag & (CLOCAL | CREAD), static_cast<tcflag_t>(CLOCAL | CREAD));
    EXPECT_EQ(state.c_cflag & (CRTSCTS | HUPCL), 0U);
    EXPECT_EQ(state.c_ospeed, 38400U) << "a pseudo-terminal's own";
    EXPECT_EQ(state.c_cc[VMIN], 1);
    EXPECT_EQ(state.c_cc[VTIME], 0);
}

TEST_F(line_state, settings_reach_the_driver_and_leave_no_old_ones) {
    DCB state = settings(8, 0, 2);
    state.BaudRate = 123456;
    state.fOutX = state.fInX = 1;
    state.fOutxCtsFlow = 1;
    state.XonChar = 0x11;
    state.XoffChar = 0x13;
    ASSERT_TRUE(com::SetCommState(port, &state));
    termios2 held = now();
    EXPECT_EQ(held.c_ospeed, 123456U);
    EXPECT_EQ(held.c_ispeed, 123456U);
    EXPECT_EQ(held.c_iflag, static_cast<tcflag_t>(IXON | IXOFF));
    EXPECT_EQ(held.c_cc[VSTART], 0x11);
    EXPECT_EQ(held.c_cc[VSTOP], 0x13);
    EXPECT_EQ(held.c_cflag & (CSTOPB | CRTSCTS), static_cast<tcflag_t>(CSTOPB | CRTSCTS));
    state = settings(8, 0, 0);
    state.fOutX = 1;
    ASSERT_TRUE(com::SetCommState(port, &state));
    held = now();
    EXPECT_EQ(held.c_ospeed, 9600U);
    EXPECT_EQ(held.c_iflag, static_cast<tcflag_t>(IXON));
    EXPECT_EQ(held.c_cflag & (CSTOPB | CRTSCTS), 0U);
}

} // namespace

#endif
