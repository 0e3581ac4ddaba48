// termios2, because it alone takes any rate and not only the classic ones. Its header cannot stand beside
// <termios.h>.
#include "platform/posix/line_settings.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <sys/ioctl.h>

namespace posix_com {
namespace {

constexpr tcflag_t format_bits = CSIZE | CSTOPB | PARENB | PARODD | CMSPAR | CRTSCTS | CBAUD;

tcflag_t size_bits(BYTE byte_size) {
    constexpr tcflag_t sizes[] = {CS5, CS6, CS7, CS8};
    return sizes[byte_size - 5];
}

tcflag_t parity_bits(BYTE parity) {
    constexpr tcflag_t parities[] = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR, PARENB | CMSPAR};
    return parities[parity];
}

bool acceptable(const DCB& s) {
    if (s.BaudRate == 0 || s.ByteSize < 5 || s.ByteSize > 8) return false;
    if (s.Parity > SPACEPARITY || s.StopBits > TWOSTOPBITS) return false;
    // Chips send one and a half stop bits with five data bits only, and two with more only.
    return s.StopBits == ONESTOPBIT || (s.StopBits == ONE5STOPBITS) == (s.ByteSize == 5);
}

bool queue_size(int fd, unsigned long request, DWORD* bytes) {
    int waiting = 0;
    if (ioctl(fd, request, &waiting) != 0) return false;
    *bytes = waiting > 0 ? static_cast<DWORD>(waiting) : 0;
    return true;
}

/// Pseudo-terminals have no modem lines, so a refusal is none of ours.
void set_modem_line(int fd, int line, bool on) { ioctl(fd, on ? TIOCMBIS : TIOCMBIC, &line); }

} // namespace

bool line_make_raw(int fd) {
    termios2 t{};
    if (ioctl(fd, TCGETS2, &t) != 0) return false;
    t.c_iflag = 0;
    t.c_oflag = 0;
    t.c_lflag = 0;
    t.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | HUPCL);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cc[VMIN] = 1; // so that an empty read says EAGAIN, and 0 can only mean that the line is gone
    t.c_cc[VTIME] = 0;
    return ioctl(fd, TCSETS2, &t) == 0;
}

bool line_apply(int fd, const DCB& state) {
    termios2 t{};
    if (!acceptable(state)) {
        errno = EINVAL;
        return false;
    }
    if (ioctl(fd, TCGETS2, &t) != 0) return false;
    t.c_cflag &= ~format_bits & ~static_cast<tcflag_t>(CBAUD << IBSHIFT);
    t.c_cflag |= BOTHER | line_control_bits(state);
    t.c_iflag = (state.fOutX ? IXON : 0U) | (state.fInX ? IXOFF : 0U);
    t.c_cc[VSTART] = static_cast<cc_t>(state.XonChar);
    t.c_cc[VSTOP] = static_cast<cc_t>(state.XoffChar);
    t.c_ispeed = state.BaudRate;
    t.c_ospeed = state.BaudRate;
    if (ioctl(fd, TCSETS2, &t) != 0) return false;
    set_modem_line(fd, TIOCM_DTR, state.fDtrControl != DTR_CONTROL_DISABLE);
    if (!state.fOutxCtsFlow) set_modem_line(fd, TIOCM_RTS, state.fRtsControl != RTS_CONTROL_DISABLE);
    return true;
}

uint32_t line_control_bits(const DCB& state) {
    const tcflag_t stop = state.StopBits != ONESTOPBIT ? CSTOPB : 0U;
    const tcflag_t flow = state.fOutxCtsFlow ? CRTSCTS : 0U;
    return size_bits(state.ByteSize) | parity_bits(state.Parity) | stop | flow;
}

int64_t line_character_us(const DCB& state) {
    const int64_t half_bits = 2 * (1 + state.ByteSize + (state.Parity != NOPARITY ? 1 : 0)) + 2 + state.StopBits;
    return half_bits * 500000 / state.BaudRate + 1;
}

bool line_in_queue(int fd, DWORD* bytes) { return queue_size(fd, FIONREAD, bytes); }
bool line_out_queue(int fd, DWORD* bytes) { return queue_size(fd, TIOCOUTQ, bytes); }
bool line_drop_input(int fd) { return ioctl(fd, TCFLSH, TCIFLUSH) == 0; }

bool line_drop_output(int fd) {
    DWORD waiting = 0;
    if (!line_out_queue(fd, &waiting)) return false;
    // With nothing left to send there is nothing to drop; a pseudo-terminal would drop what the far end already
    // has.
    return waiting == 0 || ioctl(fd, TCFLSH, TCOFLUSH) == 0;
}

} // namespace posix_com
