// What the commands do with profiles before they come to their own work.
#pragma once

#include "cli/context.h"
#include "profile/profile.h"

#include <optional>

/// Names of all models.
std::vector<std::string> model_names();
/// The family of the model that was named; null, after the error was printed, for none.
const family_descriptor* model_asked(const cli_context& with, const std::string& model, int* status);
/// A profile from a file; nothing, after a line for each fault was printed. With a model's name in the options it
/// is taken for that model of the same family.
std::optional<profile> profile_asked(const cli_context& with, const std::string& path, int* status);
/// A device with the profile's values; never null for a profile that was loaded.
std::unique_ptr<dev_obj> device_of(const profile& from);

/// Prints what differs; the status that says whether anything does.
int print_differences(const cli_context& with, const family_descriptor& of, std::span<const uint8_t> left,
                      std::span<const uint8_t> right);
