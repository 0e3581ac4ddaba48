// The register map of the B family: which bits of which register hold which property.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// A property key put together at build time.
struct vkt610b_key {
    char text[40] = {};
    constexpr std::string_view view() const { return text; }
};

/// One property. Keys of up to 8 bits are uint8 properties, keys of 32 bits are uint32 properties.
struct vkt610b_field {
    vkt610b_key key;
    uint8_t word;      ///< register number
    uint8_t bit;       ///< lowest bit
    uint8_t width;     ///< bits that a reply brings back; a value is packed unmasked within its property type
    uint32_t fallback; ///< what is packed when the store lacks the key; not always config/defaults.h's, on purpose
    bool adds = false; ///< packed by addition instead of OR: tells apart only when a value is wider than its field
};

inline constexpr std::size_t vkt610b_register_count = 35; ///< the last one is the version, read only
inline constexpr std::size_t vkt610b_writable_count = 34;

namespace vkt610b_detail {

/// "stem" + channel digit (none for 0) + "rest".
constexpr vkt610b_key key(std::string_view stem, int channel, std::string_view rest) {
    vkt610b_key out;
    std::size_t n = 0;
    for (char c : stem) out.text[n++] = c;
    if (channel != 0) out.text[n++] = static_cast<char>('0' + channel);
    for (char c : rest) out.text[n++] = c;
    return out;
}
constexpr vkt610b_key key(std::string_view whole) { return key(whole, 0, ""); }

template <std::size_t... N>
constexpr auto join(const std::array<vkt610b_field, N>&... parts) {
    std::array<vkt610b_field, (N + ...)> out{};
    std::size_t at = 0;
    auto append = [&](const auto& part) {
        for (const auto& field : part) out[at++] = field;
    };
    (append(parts), ...);
    return out;
}

// clang-format off
//                        key                                             word bit width  fallback
inline constexpr std::array change = {
    vkt610b_field{key("change_mode_vkt610b"),                                0,  0,    8,          1},
    vkt610b_field{key("change_can_channel_vkt610b"),                         1,  0,    1,          0, true},
    vkt610b_field{key("change_protcol_vkt610b"),                             1,  1,    2,          3, true},
};

constexpr auto uart(int n) {
    const auto word = static_cast<uint8_t>(1 + n);
    return std::array{
        vkt610b_field{key("uart", n, "_bps_vkt610b"),                     word,  0,    8,         15},
    };
}

inline constexpr std::array spi = {
    vkt610b_field{key("spi_picture_vkt610b"),                                4,  0,    8,          7},
    vkt610b_field{key("spi_time_vkt610b"),                                   4,  8,    8,          4},
};

/// Channel 1 or 2: its mode register and its ten filter registers.
constexpr auto canfd(int n) {
    const auto mode = static_cast<uint8_t>(4 + n);
    const auto filter = [n](int i) { return static_cast<uint8_t>(10 * n - 3 + i); };
    return std::array{
        vkt610b_field{key("canfd", n, "_speed_zc_vkt610b"),               mode,  0,    8,         10},
        vkt610b_field{key("canfd", n, "_speed_data_vkt610b"),             mode,  8,    8,          6},
        vkt610b_field{key("canfd", n, "_mode_vkt610b"),                   mode, 16,    2,          1},
        vkt610b_field{key("canfd", n, "_leach_mode_vkt610b"),             mode, 18,    2,          2},
        vkt610b_field{key("canfd", n, "_brs_vkt610b"),                    mode, 20,    1,          0},
        vkt610b_field{key("canfd", n, "_brs_do_button_vkt610b"),          mode, 21,    1,          0},
        vkt610b_field{key("canfd", n, "_scherm_vkt610b"),            filter(0),  0,   32, 0xFFFFFFFF},
        vkt610b_field{key("canfd", n, "_check0_vkt610b"),            filter(1),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check1_vkt610b"),            filter(2),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check2_vkt610b"),            filter(3),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check3_vkt610b"),            filter(4),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_scherm_e_vkt610b"),          filter(5),  0,   32, 0xFFFFFFFF},
        vkt610b_field{key("canfd", n, "_check0_e_vkt610b"),          filter(6),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check1_e_vkt610b"),          filter(7),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check2_e_vkt610b"),          filter(8),  0,   32,          0},
        vkt610b_field{key("canfd", n, "_check3_e_vkt610b"),          filter(9),  0,   32,          0},
    };
}

/// User bit timing: low half of each register for channel 1, high half for channel 2.
inline constexpr std::array timing = {
    vkt610b_field{key("canfd_bps_do_div_vkt610b"),                          27,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_brp_z_vkt610b"),                        28,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_tseg1_z_vkt610b"),                      29,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_tseg2_z_vkt610b"),                      30,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_brp_c_vkt610b"),                        31,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_tseg1_c_vkt610b"),                      32,  0,   32,          0},
    vkt610b_field{key("canfd_bps_do_tseg2_c_vkt610b"),                      33,  0,   32,          0},
};

inline constexpr std::array version = {
    vkt610b_field{key("version"),                                           34,  0,   32,          0},
};
// clang-format on

constexpr uint64_t bits_of(const vkt610b_field& f) {
    return ((f.width == 32 ? 0xFFFFFFFFull : (1ull << f.width) - 1)) << f.bit;
}

using vkt610b_rows = std::span<const vkt610b_field>;

constexpr bool fits(vkt610b_rows rows) {
    return std::all_of(rows.begin(), rows.end(), [](const vkt610b_field& f) {
        return f.word < vkt610b_register_count && (f.width <= 8 || f.width == 32) && f.bit + f.width <= 32 &&
               (f.width == 32 || (f.fallback >> f.width) == 0);
    });
}
/// No bit is named twice, and every register is named.
constexpr bool words_shared_out(vkt610b_rows rows) {
    std::array<uint64_t, vkt610b_register_count> used{};
    for (const auto& f : rows) {
        if ((used[f.word] & bits_of(f)) != 0) return false;
        used[f.word] |= bits_of(f);
    }
    return std::none_of(used.begin(), used.end(), [](uint64_t bits) { return bits == 0; });
}
constexpr bool keys_unique(vkt610b_rows rows) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = i + 1; j < rows.size(); ++j)
            if (rows[i].key.view() == rows[j].key.view()) return false;
    return true;
}

} // namespace vkt610b_detail

/// Every property of the B family, in register order within each group.
inline constexpr auto vkt610b_fields = vkt610b_detail::join(
    vkt610b_detail::change, vkt610b_detail::uart(1), vkt610b_detail::uart(2), vkt610b_detail::spi,
    vkt610b_detail::canfd(1), vkt610b_detail::canfd(2), vkt610b_detail::timing, vkt610b_detail::version);

static_assert(vkt610b_detail::fits(vkt610b_fields) && vkt610b_detail::words_shared_out(vkt610b_fields) &&
              vkt610b_detail::keys_unique(vkt610b_fields));
