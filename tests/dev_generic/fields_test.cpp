// What a person sees of each value, and within which bounds (hexadecimal) it is stored.
#include "dev_generic/family.h"
#include "dev_generic/fields.h"
#include "tests/support/field_described.h"

namespace {

TEST(generic_fields, are_described) {
    constexpr const char* uart_rates =
        "波特率 [bps] 0..13 11=300|10=600|9=1200|8=2400|7=4800|6=9600|5=14400|4=19200|3=38400|2=57600|1=115200|"
        "12=128000|13=230400|14=256000|15=460800|16=921600|17=1M|18=1.5M|19=2M";
    constexpr const char* can_rates =
        "波特率 [bps] 0..10 1=5K|2=10K|3=20K|16=25K|4=40K|5=50K|6=80K|7=100K|8=125K|9=200K|10=250K|11=400K|12=500K|"
        "13=666K|14=800K|15=1M";
    expect_fields(generic_fields,
                  {
                      {"uart_baud_rate", uart_rates},
                      {"uart_bit_num", "数据位 [位] 8..8"},
                      {"uart_stop", "停止位 [位] 1..1"},
                      {"uart_check", "校验位 0..0 0=无校验"},
                      {"uart_control", "流控制 0..0 0=无"},
                      {"can_baud_rate", can_rates},
                      {"change_err_check", "校验字节 0..1 0=否|1=是"},
                      {"can_check", "启用接收滤波 0..1"},
                      {"can_filtration", "滤波帧类型 0..8 0=仅标准滤波|8=仅扩展滤波"},
                      {"can_scherm", "屏蔽码 [Hex] 0..0"},
                      {"can_check0", "验收码 0 [Hex] 0..0"},
                      {"can_check1", "验收码 1 [Hex] 0..0"},
                      {"can_check2", "验收码 2 [Hex] 0..0"},
                      {"can_check3", "验收码 3 [Hex] 0..0"},
                      {"can_check4", "验收码 4 [Hex] 0..0"},
                      {"can_check5", "验收码 5 [Hex] 0..0"},
                      {"change_mode", "转换模式 0..3 1=透明转换|2=透明带标识转换|3=自定义协议转换"},
                      {"change_dir", "转换方向 0..2 0=双向|1=仅 SPI/UART 转 CAN|2=仅 CAN 转 SPI/UART"},
                      {"uart_f_distance", "帧间隔 [bit] 0..FF"},
                      {"change_can_serial", "CAN 帧信息转到串口 0..1"},
                      {"change_id_serial", "CAN 帧标识转到串口 0..1"},
                      {"can_sendf_kind", "帧类型 0..8 0=标准帧|8=扩展帧"},
                      {"can_sendf_flage", "帧标识 [Hex] 0..0"},
                      {"change_len", "标识长度 [字节] 0..8"},
                      {"change_star", "起始位置 [字节] 0..7"},
                      {"change_fh", "帧头 [Hex] 0..0"},
                      {"change_fe", "帧尾 [Hex] 0..0"},
                      {"spi_ff_fnum", "帧字节数 [字节] 0..FF"},
                      {"spi_ff_time", "帧时间 [ms] 0..FF"},
                      {"spi_data_len", "数据长度 [位] 8..8"},
                      {"spi_bit_tran", "位传输顺序 0..0 0=MSB"},
                      {"spi_cpol", "时钟极性 1..1"},
                      {"spi_cpha", "时钟相位 1..1"},
                  });
}

TEST(generic_models, have_their_place_in_the_selector) {
    EXPECT_STREQ(generic_family.device, "VKT531A");
    expect_models(generic_family.models, {{"VKT531A", 1}, {"VKT530A", 6}});
}

} // namespace
