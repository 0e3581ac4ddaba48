#include "toolkit/core/log.h"

#include "toolkit/core/result.h"
#include "toolkit/core/text.h"

#include <gmock/gmock.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void collect(const std::string& text, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(text);
}

class log_lines : public testing::Test {
  protected:
    void SetUp() override { log_set_capture(collect, &lines); }
    void TearDown() override {
        log_set_capture(nullptr, nullptr);
        log_set_log_level(LOG_LEVEL_ERROR);
    }
    std::vector<std::string> lines;
};

ret_t needs(const void* win) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", "home_page_init", RET_BAD_PARAMS);
    return RET_OK;
}

TEST_F(log_lines, starts_at_error_level) { EXPECT_EQ(log_get_log_level(), LOG_LEVEL_ERROR); }

TEST_F(log_lines, drops_what_is_below_the_level) {
    for (int level = LOG_LEVEL_DEBUG; level <= LOG_LEVEL_ERROR; level++) {
        lines.clear();
        log_set_log_level(static_cast<log_level_t>(level));
        EXPECT_EQ(log_get_log_level(), level);
        log_write(LOG_LEVEL_DEBUG, "d\n");
        log_write(LOG_LEVEL_INFO, "i\n");
        log_write(LOG_LEVEL_WARN, "w\n");
        log_write(LOG_LEVEL_ERROR, "e\n");
        EXPECT_EQ(lines.size(), static_cast<std::size_t>(4 - level));
        EXPECT_EQ(lines.back(), "e\n");
    }
}

TEST_F(log_lines, console_text_passes_whatever_the_level) {
    log_console("dev_vkt530a\n");
    EXPECT_THAT(lines, ElementsAre("dev_vkt530a\n"));
}

TEST_F(log_lines, a_failed_condition_names_routine_line_and_condition) {
    int window = 0;
    log_set_log_level(LOG_LEVEL_WARN);
    EXPECT_EQ(needs(&window), RET_OK);
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_EQ(needs(nullptr), RET_BAD_PARAMS);
    ASSERT_EQ(lines.size(), 1U);
    const std::size_t colon = lines[0].find(':');
    EXPECT_EQ(lines[0].substr(0, colon), "home_page_init");
    EXPECT_GT(tk_atoi(lines[0].c_str() + colon + 1), 0);
    EXPECT_EQ(lines[0].substr(lines[0].find(' ')), " condition(win != NULL) failed!\n");
    log_condition_failed(nullptr, nullptr, 3);
    EXPECT_EQ(lines.back(), ":3 condition() failed!\n");
    lines.clear();
    log_set_log_level(LOG_LEVEL_ERROR);
    EXPECT_EQ(needs(nullptr), RET_BAD_PARAMS);
    EXPECT_THAT(lines, IsEmpty()) << "a warning, not an error";
}

TEST_F(log_lines, go_to_standard_output_without_a_capture) {
    log_set_capture(nullptr, nullptr);
    testing::internal::CaptureStdout();
    log_write(LOG_LEVEL_ERROR, "100%s\n");
    log_console("plain\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "100%s\nplain\n");
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(log_lines, of_several_threads_stay_whole) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; number++) {
        threads.emplace_back([] {
            for (int i = 0; i < 200; i++) log_write(LOG_LEVEL_ERROR, "one whole line\n");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(lines.size(), 800U);
    EXPECT_THAT(lines, testing::Each("one whole line\n"));
}

} // namespace
