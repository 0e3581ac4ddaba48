// Profiles: what stands in the file, that it is read back as it was, and what it does to a device.
#include "profile/export.h"
#include "profile/profile.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_fixture.h"

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

constexpr const char* models[] = {"VKT510A", "VKT530A", "VKT531A", "VKT610B", "VKT630B", "VKT631B"};

/// The text of a model's defaults.
std::string default_text(const std::string& model) { return profile_text(*profile_default(all_families, model)); }

/// A default profile with one line's value replaced; the key must be there.
std::string with_value(const std::string& model, const std::string& key, const std::string& value) {
    std::string text = default_text(model);
    const std::string head = "        \"" + key + "\": ";
    const std::size_t at = text.find(head);
    EXPECT_NE(at, std::string::npos) << key;
    const std::size_t end = text.find('\n', at);
    const bool last = text[end - 1] != ',';
    return text.replace(at, end - at, head + value + (last ? "" : ","));
}

TEST(profiles, the_file_is_for_people) {
    const std::string head =
        "{\n    \"format\": 1,\n    \"program\": \"" + std::string(program_version()) + "\",\n";
    EXPECT_EQ(default_text("VKT531A"), head + R"(    "model": "VKT531A",
    "note": "",
    "values": {
        "change_mode": {"value": 2, "text": "透明带标识转换"},
        "change_dir": {"value": 0, "text": "双向"},
        "change_err_check": "否",
        "change_star": 0,
        "change_len": 4,
        "change_can_serial": false,
        "change_id_serial": false,
        "change_fh": "40",
        "change_fe": "1A",
        "spi_ff_fnum": 15,
        "spi_ff_time": 5,
        "spi_bit_tran": "MSB",
        "spi_data_len": 8,
        "spi_cpol": 1,
        "spi_cpha": 1,
        "uart_baud_rate": {"value": 1, "text": "115200"},
        "uart_check": "无校验",
        "uart_control": "无",
        "uart_f_distance": 2,
        "uart_bit_num": 8,
        "uart_stop": 1,
        "can_baud_rate": {"value": 8, "text": "125K"},
        "can_sendf_kind": {"value": 8, "text": "扩展帧"},
        "can_sendf_flage": "00 00 00 00",
        "can_check": false,
        "can_filtration": {"value": 8, "text": "仅扩展滤波"},
        "can_scherm": "FF FF FF FF",
        "can_check0": "00 00 00 00",
        "can_check1": "00 00 00 00",
        "can_check2": "00 00 00 00",
        "can_check3": "00 00 00 00",
        "can_check4": "00 00 00 00",
        "can_check5": "00 00 00 00"
    }
}
)");
}

TEST(profiles, numbers_have_beside_them_what_the_window_shows) {
    EXPECT_THAT(
        default_text("VKT510A"),
        testing::HasSubstr("\"can_send_shield_vkt510a\": {\"value\": 4294967295, \"text\": \"FF FF FF FF\"}"));
    EXPECT_THAT(default_text("VKT510A"),
                testing::HasSubstr("\"change_f_h_vkt510a\": {\"value\": 64, \"text\": \"40\"}"));
    EXPECT_THAT(default_text("VKT610B"),
                testing::HasSubstr("\"spi_time_vkt610b\": {\"value\": 9, \"text\": \"10\"}"));
    EXPECT_THAT(default_text("VKT610B"),
                testing::HasSubstr("\"canfd_bps_do_div_vkt610b\": {\"value\": 262148, \"text\": \"0x00040004\"}"));
}

TEST(profiles, the_modules_own_value_is_in_none) {
    EXPECT_THAT(default_text("VKT610B"), testing::Not(testing::HasSubstr("\"version\"")));
}

TEST(profiles, what_was_saved_is_read_back) {
    for (const char* model : models) {
        SCOPED_TRACE(model);
        profile before = *profile_default(all_families, model);
        before.note = "夹具 \"3\"\n第二行";
        const profile_read_result read = profile_parse(profile_text(before), all_families);
        ASSERT_TRUE(read.loaded) << profile_refusal_line(read.refusals.front());
        EXPECT_EQ(read.loaded->model, model);
        EXPECT_EQ(read.loaded->note, before.note);
        EXPECT_EQ(profile_text(*read.loaded), profile_text(before));
    }
}

TEST(profiles, a_missing_key_stands_for_its_default) {
    const auto read = profile_parse(R"({"format": 1, "model": "VKT610B", "values": {}})", all_families);
    ASSERT_TRUE(read.loaded);
    EXPECT_EQ(profile_text(*read.loaded).substr(profile_text(*read.loaded).find("\"values\"")),
              default_text("VKT610B").substr(default_text("VKT610B").find("\"values\"")));
}

/// A profile's text, applied to a fresh device of its model.
class applied : public testing::Test {
  protected:
    void apply(const std::string& text) {
        const auto read = profile_parse(text, all_families);
        ASSERT_TRUE(read.loaded) << profile_refusal_line(read.refusals.front());
        dev = dev_open(all_families, read.loaded->model.c_str());
        ASSERT_EQ(profile_apply(*read.loaded, *dev), RET_OK);
    }
    std::unique_ptr<dev_obj> dev;
};

TEST_F(applied, the_image_is_that_of_the_values) {
    apply(with_value("VKT531A", "can_baud_rate", "12"));
    EXPECT_EQ(dev->image[4], 12);
    apply(with_value("VKT531A", "can_scherm", "\"12 34 56 78\""));
    EXPECT_EQ(std::vector<uint8_t>(dev->image.begin() + 10, dev->image.begin() + 14),
              (std::vector<uint8_t>{0x12, 0x34, 0x56, 0x78}));
    apply(with_value("VKT531A", "can_check", "true"));
    EXPECT_EQ(dev->image[8], 1);
    apply(with_value("VKT531A", "change_err_check", "\"是\""));
    EXPECT_EQ(dev->image[5], 1);
    apply(with_value("VKT510A", "can_send_data_vkt510a", "{\"value\": 305419896, \"text\": \"12 34 56 78\"}"));
    EXPECT_EQ(std::vector<uint8_t>(dev->image.begin() + 48, dev->image.begin() + 52),
              (std::vector<uint8_t>{0x12, 0x34, 0x56, 0x78}));
    apply(with_value("VKT610B", "canfd2_speed_zc_vkt610b", "3"));
    EXPECT_EQ(dev->image[4 * 6], 3);
}

TEST_F(applied, every_default_gives_the_image_of_a_new_device) {
    for (const char* model : models) {
        SCOPED_TRACE(model);
        const auto fresh = dev_open(all_families, model);
        apply(default_text(model));
        EXPECT_EQ(dev->image, fresh->image);
    }
}

TEST_F(applied, all_or_nothing) {
    const auto read = profile_parse(with_value("VKT531A", "change_mode", "3"), all_families);
    dev = dev_open(all_families, "VKT531A");
    const std::vector<uint8_t> before = dev->image;
    tk_object_refuse(dev->props.get(), "can_check5"); // the last one
    EXPECT_EQ(profile_apply(*read.loaded, *dev), RET_FAIL);
    EXPECT_EQ(tk_object_get_prop_uint8(dev->props.get(), "change_mode", 0), 2);
    EXPECT_EQ(dev->image, before);
}

TEST_F(applied, another_family_is_refused) {
    dev = dev_open(all_families, "VKT610B");
    EXPECT_EQ(profile_apply(*profile_default(all_families, "VKT531A"), *dev), RET_BAD_PARAMS);
}

TEST_F(applied, what_is_edited_becomes_a_profile) {
    dev = dev_open(all_families, "VKT531A");
    tk_object_set_prop_uint8(dev->props.get(), "change_mode", 1);
    tk_object_set_prop_str(dev->props.get(), "change_fh", "4"); // as it stands while one types
    ASSERT_EQ(dev_encode(*dev), RET_OK);
    const profile made = profile_of(*dev, "VKT530A");
    EXPECT_EQ(made.model, "VKT530A");
    EXPECT_EQ(made.find("change_mode")->value.number, 1u);
    EXPECT_EQ(made.find("change_fh")->value.text, "04");
    EXPECT_EQ(made.find("nobody"), nullptr);
    EXPECT_TRUE(profile_parse(profile_text(made), all_families).loaded);
}

// Of these the store keeps the default after a reply; a write sends what the module had.
TEST_F(applied, a_profile_has_the_values_that_a_write_sends) {
    dev = dev_open(all_families, "VKT531A");
    std::vector<uint8_t> reply = dev->image;
    reply[26] = 0x12; // acceptance code 2
    reply[51] = 0x34; // identifier of sent frames
    dev_accept(*dev, reply);
    const profile made = profile_of(*dev, "VKT531A");
    EXPECT_EQ(made.find("can_check2")->value.text, "12 00 00 00");
    EXPECT_EQ(made.find("can_sendf_flage")->value.text, "00 00 00 34");
    const auto other = dev_open(all_families, "VKT531A");
    ASSERT_EQ(profile_apply(made, *other), RET_OK);
    EXPECT_EQ(export_frames(*other, false), export_frames(*dev, false));
}

// ---- files ----

class profile_files : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(folder, ignored);
    }
    std::string path(const std::string& name) const { return (folder / name).string(); }
    std::string reason(const std::string& name) const {
        const auto read = profile_load(path(name), all_families);
        EXPECT_FALSE(read.loaded);
        return read.refusals.size() == 1 ? profile_refusal_line(read.refusals[0]) : "not one line";
    }
    const std::filesystem::path folder = scratch_folder("vkt_profile");
};

TEST_F(profile_files, saved_and_loaded) {
    const profile before = *profile_default(all_families, "VKT630B");
    ASSERT_EQ(profile_save(before, path("a.json")), RET_OK);
    const auto read = profile_load(path("a.json"), all_families);
    ASSERT_TRUE(read.loaded);
    EXPECT_EQ(profile_text(*read.loaded), profile_text(before));
}

TEST_F(profile_files, a_file_is_replaced_whole) {
    ASSERT_EQ(profile_save(*profile_default(all_families, "VKT610B"), path("a.json")), RET_OK);
    ASSERT_EQ(profile_save(*profile_default(all_families, "VKT510A"), path("a.json")), RET_OK);
    EXPECT_EQ(profile_load(path("a.json"), all_families).loaded->model, "VKT510A");
    const auto files = std::filesystem::directory_iterator(folder);
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(profile_files, what_cannot_be_loaded_says_why) {
    ASSERT_EQ(fs_append(path("empty.json").c_str(), ""), RET_OK);
    ASSERT_EQ(fs_append(path("large.json").c_str(), std::string(profile_max_bytes + 1, ' ')), RET_OK);
    EXPECT_EQ(reason("none.json"), "文件不存在");
    EXPECT_EQ(reason(""), "是文件夹");
    EXPECT_EQ(reason("empty.json"), "文件为空");
    EXPECT_EQ(reason("large.json"), "文件过大（最多 1 MiB）");
}

TEST_F(profile_files, of_100_megabytes_only_the_limit_is_read) {
    ASSERT_EQ(fs_append(path("huge.json").c_str(), "{"), RET_OK);
    std::filesystem::resize_file(path("huge.json"), 100UL * 1024 * 1024);
    EXPECT_EQ(reason("huge.json"), "文件过大（最多 1 MiB）");
}

TEST_F(profile_files, a_save_that_fails_leaves_what_was_there) {
    ASSERT_EQ(profile_save(*profile_default(all_families, "VKT610B"), path("a.json")), RET_OK);
    EXPECT_EQ(profile_save(*profile_default(all_families, "VKT610B"), path("none/a.json")), RET_FAIL);
    EXPECT_EQ(profile_save(*profile_default(all_families, "VKT610B"), folder.string()), RET_FAIL);
    EXPECT_TRUE(profile_load(path("a.json"), all_families).loaded);
}

#ifndef _WIN32
/// Files of this process end after so many bytes, as on a disk that is full.
class short_files {
  public:
    explicit short_files(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit now{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &now);
    }
    ~short_files() { setrlimit(RLIMIT_FSIZE, &before_); }
    short_files(const short_files&) = delete;
    short_files& operator=(const short_files&) = delete;

  private:
    rlimit before_{};
};

TEST_F(profile_files, a_full_disk_leaves_what_was_there) {
    ASSERT_EQ(profile_save(*profile_default(all_families, "VKT610B"), path("a.json")), RET_OK);
    {
        const short_files full(500);
        EXPECT_EQ(profile_save(*profile_default(all_families, "VKT531A"), path("a.json")), RET_FAIL);
    }
    EXPECT_EQ(profile_load(path("a.json"), all_families).loaded->model, "VKT610B");
    const auto files = std::filesystem::directory_iterator(folder);
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}
#endif

} // namespace
