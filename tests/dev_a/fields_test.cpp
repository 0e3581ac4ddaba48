// What a person sees of each value, and within which bounds (hexadecimal) it is stored.
#include "dev_a/family.h"
#include "dev_a/fields.h"
#include "tests/support/field_described.h"

namespace {

TEST(a_fields, are_described) {
    constexpr const char* uart_rates =
        "波特率 [bps] 0..10 11=300|10=600|9=1200|8=2400|7=4800|6=9600|5=14400|4=19200|3=38400|2=57600|1=115200|"
        "12=128000|13=230400|14=256000|15=460800|16=921600";
    constexpr const char* can_rates =
        "波特率 [bps] 0..F 1=5k|2=10k|3=20k|4=40k|5=50k|6=80k|7=100k|8=125k|9=200k|10=250k|11=400k|12=500k|13=666k|"
        "14=800k|15=1M";
    expect_fields(vkt510a_fields,
                  {
                      {"uart_bps_vkt510a", uart_rates},
                      {"can_bps_vkt510a", can_rates},
                      {"can_filtration_en_vkt510a", "启用接收滤波 0..F"},
                      {"can_filtration_mode_vkt510a", "滤波帧类型 0..F 8=仅扩展帧滤波|0=仅标准帧滤波"},
                      {"can_send_shield_vkt510a", "屏蔽码 [Hex] 0..FFFFFFFF"},
                      {"can_send_check0_vkt510a", "验收码 0 [Hex] 0..FFFFFFFF"},
                      {"can_send_check1_vkt510a", "验收码 1 [Hex] 0..FFFFFFFF"},
                      {"can_send_check2_vkt510a", "验收码 2 [Hex] 0..FFFFFFFF"},
                      {"can_send_check3_vkt510a", "验收码 3 [Hex] 0..FFFFFFFF"},
                      {"can_send_check4_vkt510a", "验收码 4 [Hex] 0..FFFFFFFF"},
                      {"can_send_check5_vkt510a", "验收码 5 [Hex] 0..FFFFFFFF"},
                      {"change_mode_vkt510a", "转换模式 0..3 1=透明转换|2=透明带标识转换|3=自定义协议转换"},
                      {"change_dir_vkt510a", "转换方向 0..2 0=双向|1=仅 SPI/UART 转 CAN|2=仅 CAN 转 SPI/UART"},
                      {"uart_distance_vkt510a", "帧间隔 [bit] 0..10"},
                      {"change_can_c_vkt510a", "CAN 帧信息转到串口 0..2"},
                      {"change_can_id_vkt510a", "CAN 帧标识转到串口 0..2"},
                      {"can_send_kind_vkt510a", "帧类型 0..F 8=扩展帧|0=标准帧"},
                      {"can_send_data_vkt510a", "帧标识 [Hex] 0..FFFFFFFF"},
                      {"change_can_len_vkt510a", "标识长度 [字节] 0..4"},
                      {"change_can_star_vkt510a", "起始位置 [字节] 0..7"},
                      {"change_f_h_vkt510a", "帧头 [Hex] 0..FF"},
                      {"change_f_e_vkt510a", "帧尾 [Hex] 0..FF"},
                      {"spi_number_vkt510a", "帧字节数 [字节] 0..FE"},
                      {"spi_time_vkt510a", "帧时间 [ms] 0..FE"},
                  });
}

TEST(a_fields, that_no_value_stands_behind_are_described_too) {
    EXPECT_EQ(field_described(vkt510a_field::uart_parity), "校验位 0..0 0=无校验");
    EXPECT_EQ(field_described(vkt510a_field::uart_control), "流控制 0..0 0=无");
    EXPECT_EQ(field_described(vkt510a_field::bit_order), "位传输顺序 0..0 0=MSB");
}

TEST(a_models, have_their_place_in_the_selector) {
    EXPECT_STREQ(vkt510a_family.device, "VKT510A");
    expect_models(vkt510a_family.models, {{"VKT510A", 3}});
}

} // namespace
