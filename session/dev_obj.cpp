#include "session/dev_obj.h"

#include <algorithm>

dev_obj::dev_obj(const family_descriptor& family, session_reports reports)
    : of(family), props(object_default_create()), image(family.image_size), session(family, std::move(reports)) {
    fields_set_defaults(of.fields, props.get());
}

std::unique_ptr<dev_obj> dev_open(family_list families, const char* model, session_reports reports) {
    const family_descriptor* of = model == nullptr ? nullptr : family_of_model(families, model);
    if (of == nullptr) return nullptr;
    auto dev = std::make_unique<dev_obj>(*of, std::move(reports));
    of->encode(*dev);
    return dev;
}

ret_t dev_encode(dev_obj& dev, const char* key) {
    if (key != nullptr && dev.of.encode_key != nullptr) return dev.of.encode_key(dev, key);
    dev.of.encode(dev);
    return RET_OK;
}

void dev_show(const dev_obj& dev) {
    if (dev.shown) dev.shown();
}

void dev_edited(const dev_obj& dev, const edit_cause& cause) {
    if (dev.edited) dev.edited(cause);
}

void dev_module_holds(dev_obj& dev, std::span<const uint8_t> image) {
    if (image.size() != dev.image.size()) return;
    dev.in_module = {{image.begin(), image.end()}, {}};
    date_time_init(&dev.in_module->at);
}

void dev_module_unknown(dev_obj& dev) { dev.in_module.reset(); }

void dev_accept(dev_obj& dev, std::span<const uint8_t> image) {
    dev_module_holds(dev, image);
    if (image.size() == dev.image.size()) std::ranges::copy(image, dev.image.begin());
    dev.of.decode(dev);
    if (dev.of.encodes_after_decode) dev.of.encode(dev);
}

void dev_restore(dev_obj& dev) {
    fields_set_defaults(dev.of.fields, dev.props.get(), dev.of.kept_at_restore);
    dev.of.encode(dev);
}

session_input dev_session_input(const dev_obj& dev, session_kind kind, bool alternative) {
    session_input input;
    if (dev.of.requests != nullptr) input.requests = dev.of.requests(dev, kind, alternative);
    return input;
}
