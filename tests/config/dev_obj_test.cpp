#include "config/dev_obj.h"

#include "config/models.h"

#include <gtest/gtest.h>

namespace {

ret_t some_encode(void*) { return RET_OK; }
ret_t some_show(widget*, void*) { return RET_OK; }

/// Objects live as long as the program; the tests free what they opened.
struct opened {
    explicit opened(const char* model) : dev(dev_open(model)) {}
    ~opened() {
        tk_object_unref(dev->props);
        if (dev->mutex != nullptr) tk_mutex_destroy(dev->mutex);
        delete dev;
    }
    opened(const opened&) = delete;
    opened& operator=(const opened&) = delete;
    dev_obj* dev;
};

TEST(dev_open, vkt510a_gives_the_a_object_with_its_properties) {
    const opened o("VKT510A");
    EXPECT_STREQ(o.dev->model, "VKT510A");
    EXPECT_EQ(o.dev->state, 0U);
    ASSERT_NE(o.dev->props, nullptr);
    EXPECT_EQ(tk_object_get_prop_uint8(o.dev->props, "change_f_h_vkt510a", 0), 64);
    EXPECT_FALSE(tk_object_has_prop(o.dev->props, "change_mode_vkt610b"));
    ASSERT_NE(o.dev->mutex, nullptr);
    EXPECT_EQ(tk_mutex_try_lock(o.dev->mutex), RET_OK);
    EXPECT_EQ(tk_mutex_unlock(o.dev->mutex), RET_OK);
    for (uint8_t flag : o.dev->flags) EXPECT_EQ(flag, 0);
}

TEST(dev_open, all_three_b_models_give_the_b_object) {
    for (const char* model : {"VKT610B", "VKT630B", "VKT631B"}) {
        const opened o(model);
        EXPECT_STREQ(o.dev->model, "VKT610B") << model;
        EXPECT_EQ(tk_object_get_prop_uint32(o.dev->props, "canfd_bps_do_tseg1_z_vkt610b", 0), 0x200020U);
        EXPECT_NE(o.dev->mutex, nullptr);
    }
}

TEST(dev_open, any_other_text_gives_a_zeroed_record) {
    for (const char* model : {"VKT531A", "VKT530A", "", "vkt510a", "VKT510A ", static_cast<const char*>(nullptr)}) {
        const opened o(model);
        ASSERT_NE(o.dev, nullptr);
        EXPECT_EQ(o.dev->model, nullptr);
        EXPECT_EQ(o.dev->props, nullptr);
        EXPECT_EQ(o.dev->mutex, nullptr);
        EXPECT_EQ(o.dev->ops.encode, nullptr);
        EXPECT_EQ(o.dev->ops.decode, nullptr);
        EXPECT_EQ(o.dev->ops.show_code, nullptr);
    }
}

TEST(dev_open, copies_the_operations_that_the_family_registered) {
    const family_ops before = family_ops_of(family::b);
    family_ops_register(family::b, {.encode = some_encode, .show_code = some_show});
    const opened b("VKT630B");
    EXPECT_EQ(b.dev->ops.encode, some_encode);
    EXPECT_EQ(b.dev->ops.show_code, some_show);
    EXPECT_EQ(b.dev->ops.decode, nullptr);
    const opened generic("VKT531A");
    EXPECT_EQ(generic.dev->ops.encode, nullptr);
    family_ops_register(family::b, before);
}

TEST(dev_slots, hold_one_object_for_each_family) {
    const opened a("VKT510A");
    const opened b("VKT610B");
    EXPECT_EQ(dev_get(family::a), nullptr);
    dev_set(family::a, a.dev);
    dev_set(family::b, b.dev);
    EXPECT_EQ(dev_get(family::a), a.dev);
    EXPECT_EQ(dev_get(family::b), b.dev);
    EXPECT_EQ(dev_get(family::generic), nullptr);
    dev_set(family::a, nullptr);
    dev_set(family::b, nullptr);
}

TEST(config_objects, are_created_once_with_defaults_and_port_names) {
    EXPECT_EQ(config_store(), nullptr);
    ASSERT_EQ(config_objects_create(), RET_OK);
    tk_object* store = config_store();
    EXPECT_EQ(config_objects_create(), RET_FAIL);
    EXPECT_EQ(config_store(), store);
    EXPECT_EQ(tk_object_get_prop_uint8(store, "spi_ff_fnum", 0), 15);
    EXPECT_EQ(tk_object_keys(com_name_map()).size(), 500U);
    EXPECT_EQ(tk_object_get_prop_str(com_name_map(), "COM0", ""), "\\\\.\\COM0");
    EXPECT_EQ(tk_object_get_prop_str(com_name_map(), "COM7", ""), "\\\\.\\COM7");
    EXPECT_EQ(tk_object_get_prop_str(com_name_map(), "COM499", ""), "\\\\.\\COM499");
    EXPECT_FALSE(tk_object_has_prop(com_name_map(), "COM500"));
    EXPECT_NE(store_lock(), nullptr);
    EXPECT_NE(generic_session_lock(), nullptr);
    EXPECT_NE(store_lock(), generic_session_lock());
    EXPECT_EQ(config_objects_destroy(), RET_OK);
    EXPECT_EQ(config_store(), nullptr);
    EXPECT_EQ(generic_session_lock(), nullptr);
    EXPECT_EQ(config_objects_destroy(), RET_FAIL);
}

TEST(config_objects, stay_while_a_worker_lives) {
    ASSERT_EQ(config_objects_create(), RET_OK);
    tk_semaphore* go = tk_semaphore_create(0);
    tk_thread* worker = tk_thread_create([go] {
        tk_semaphore_wait(go, 0xFFFFFFFF);
        return 0U;
    });
    ASSERT_EQ(tk_thread_start(worker), RET_OK);
    EXPECT_EQ(config_objects_destroy(), RET_FAIL);
    EXPECT_NE(config_store(), nullptr);
    tk_semaphore_post(go);
    tk_thread_join(worker);
    tk_thread_destroy(worker);
    tk_semaphore_destroy(go);
    EXPECT_EQ(config_objects_destroy(), RET_OK);
}

TEST(current_model, starts_as_vkt531a_and_keeps_99_bytes) {
    EXPECT_EQ(current_model(), "VKT531A");
    EXPECT_EQ(current_family(), family::generic);
    set_current_model("VKT631B");
    EXPECT_EQ(current_family(), family::b);
    set_current_model("VKT510A");
    EXPECT_EQ(current_family(), family::a);
    set_current_model(std::string(150, 'x'));
    EXPECT_EQ(current_model(), std::string(99, 'x'));
    EXPECT_EQ(current_family(), family::generic);
    set_current_model(std::string(98, 'x') + "型"); // three bytes that no longer fit whole
    EXPECT_EQ(current_model(), std::string(98, 'x'));
    set_current_model("VKT531A");
}

TEST(models, stand_in_the_selectors_order_with_their_values) {
    const std::pair<const char*, int> expected[] = {{"VKT510A", 3}, {"VKT531A", 1}, {"VKT530A", 6},
                                                    {"VKT610B", 2}, {"VKT630B", 4}, {"VKT631B", 5}};
    ASSERT_EQ(models.size(), std::size(expected));
    for (std::size_t i = 0; i < models.size(); i++) {
        EXPECT_STREQ(models[i].name, expected[i].first);
        EXPECT_EQ(models[i].selector_value, expected[i].second);
    }
    EXPECT_EQ(model_find("VKT999"), nullptr);
}

} // namespace
