// What a person sees of each value, and within which bounds (hexadecimal) it is stored.
#include "dev_b/family.h"
#include "dev_b/fields.h"
#include "tests/support/field_described.h"

namespace {

TEST(b_fields, are_described) {
    constexpr const char* uart_rates =
        "波特率 [bps] 0..18 0=300|1=600|2=1.2k|3=2.4k|4=4.8k|5=9.6k|6=14.4k|7=19.2k|8=38.4k|9=57.6k|10=115.2k|"
        "11=128k|12=256k|13=460.8k|14=921.6k|15=1M|16=1.5M|17=2M|18=2.5M|19=3M|20=3.5M|21=4M|22=5M|23=6M|24=7M";
    constexpr const char* nominal =
        "仲裁段速率 0..B 0=40k|1=50k|2=80k|3=100k|4=125k|5=200k|6=250k|7=400k|8=500k|9=800k|10=1M";
    constexpr const char* data = "数据段速率 0..7 0=400k|1=500k|2=800k|3=1M|4=2M|5=4M|6=5M";
    constexpr const char* bus = "总线模式 0..2 0=CAN模式|1=CAN FD模式|2=CAN+CAN FD 模式";
    constexpr const char* filters = "滤波模式 0..2 0=标准帧滤波|1=扩展帧滤波|2=标准帧、扩展帧滤波";
    expect_fields(vkt610b_fields, {
                                      {"change_mode_vkt610b", "转换模式 0..1 0=自定义转换|1=自定义带校验转换"},
                                      {"change_can_channel_vkt610b", "CAN FD 通道数 [路] 0..1+1"},
                                      {"change_protcol_vkt610b", "转换通道 0..2 0=UART1|1=UART1和UART2|2=SPI"},
                                      {"uart1_bps_vkt610b", uart_rates},
                                      {"uart2_bps_vkt610b", uart_rates},
                                      {"spi_picture_vkt610b", "帧数 [帧] 0..63+1"},
                                      {"spi_time_vkt610b", "时间 [ms] 0..FF+1"},
                                      {"canfd1_speed_zc_vkt610b", nominal},
                                      {"canfd1_speed_data_vkt610b", data},
                                      {"canfd1_mode_vkt610b", bus},
                                      {"canfd1_leach_mode_vkt610b", filters},
                                      {"canfd1_brs_vkt610b", "速率切换 BRS 0..1"},
                                      {"canfd1_brs_do_button_vkt610b", "自定义位定时 0..1"},
                                      {"canfd1_scherm_vkt610b", "屏蔽码 [Hex] 0..7FF"},
                                      {"canfd1_check0_vkt610b", "验收码 0 [Hex] 0..7FF"},
                                      {"canfd1_check1_vkt610b", "验收码 1 [Hex] 0..7FF"},
                                      {"canfd1_check2_vkt610b", "验收码 2 [Hex] 0..7FF"},
                                      {"canfd1_check3_vkt610b", "验收码 3 [Hex] 0..7FF"},
                                      {"canfd1_scherm_e_vkt610b", "屏蔽码 [Hex] 0..1FFFFFFF"},
                                      {"canfd1_check0_e_vkt610b", "验收码 0 [Hex] 0..1FFFFFFF"},
                                      {"canfd1_check1_e_vkt610b", "验收码 1 [Hex] 0..1FFFFFFF"},
                                      {"canfd1_check2_e_vkt610b", "验收码 2 [Hex] 0..1FFFFFFF"},
                                      {"canfd1_check3_e_vkt610b", "验收码 3 [Hex] 0..1FFFFFFF"},
                                      {"canfd2_speed_zc_vkt610b", nominal},
                                      {"canfd2_speed_data_vkt610b", data},
                                      {"canfd2_mode_vkt610b", bus},
                                      {"canfd2_leach_mode_vkt610b", filters},
                                      {"canfd2_brs_vkt610b", "速率切换 BRS 0..1"},
                                      {"canfd2_brs_do_button_vkt610b", "自定义位定时 0..1"},
                                      {"canfd2_scherm_vkt610b", "屏蔽码 [Hex] 0..7FF"},
                                      {"canfd2_check0_vkt610b", "验收码 0 [Hex] 0..7FF"},
                                      {"canfd2_check1_vkt610b", "验收码 1 [Hex] 0..7FF"},
                                      {"canfd2_check2_vkt610b", "验收码 2 [Hex] 0..7FF"},
                                      {"canfd2_check3_vkt610b", "验收码 3 [Hex] 0..7FF"},
                                      {"canfd2_scherm_e_vkt610b", "屏蔽码 [Hex] 0..1FFFFFFF"},
                                      {"canfd2_check0_e_vkt610b", "验收码 0 [Hex] 0..1FFFFFFF"},
                                      {"canfd2_check1_e_vkt610b", "验收码 1 [Hex] 0..1FFFFFFF"},
                                      {"canfd2_check2_e_vkt610b", "验收码 2 [Hex] 0..1FFFFFFF"},
                                      {"canfd2_check3_e_vkt610b", "验收码 3 [Hex] 0..1FFFFFFF"},
                                      {"canfd_bps_do_div_vkt610b", "时钟分频 0..FFFFFFFF"},
                                      {"canfd_bps_do_brp_z_vkt610b", "BRP 0..FFFFFFFF"},
                                      {"canfd_bps_do_tseg1_z_vkt610b", "TSEG1 [tq] 0..FFFFFFFF"},
                                      {"canfd_bps_do_tseg2_z_vkt610b", "TSEG2 [tq] 0..FFFFFFFF"},
                                      {"canfd_bps_do_brp_c_vkt610b", "BRP 0..FFFFFFFF"},
                                      {"canfd_bps_do_tseg1_c_vkt610b", "TSEG1 [tq] 0..FFFFFFFF"},
                                      {"canfd_bps_do_tseg2_c_vkt610b", "TSEG2 [tq] 0..FFFFFFFF"},
                                      {"version", "固件版本 0..FFFFFFFF"},
                                  });
}

TEST(b_models, have_their_place_in_the_selector) {
    EXPECT_STREQ(vkt610b_family.device, "VKT610B");
    expect_models(vkt610b_family.models, {{"VKT610B", 2}, {"VKT630B", 4}, {"VKT631B", 5}});
}

} // namespace
