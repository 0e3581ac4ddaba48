// Where a configuration that is written as text has the bytes of the image.
#pragma once

#include <cstddef>
#include <vector>

/// A run of image bytes that stand in the text side by side, each as two hex digits.
struct code_span {
    std::size_t text_at = 0;  ///< of the first digit, in bytes of the text
    std::size_t image_at = 0; ///< first byte in the image
    std::size_t count = 1;    ///< bytes
    bool operator==(const code_span&) const = default;
};
using code_spans = std::vector<code_span>;
