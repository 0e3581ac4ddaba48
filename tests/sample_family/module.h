// The simulated module of the sample family.
#pragma once

#include "sim/line.h"
#include "toolkit/core/worker.h"

#include <array>
#include <vector>

class sample_module {
  public:
    explicit sample_module(const std::string& com_name);
    bool plugged_in() const { return line_ != nullptr; }
    std::array<uint8_t, 3> memory() const;
    void set_memory(const std::array<uint8_t, 3>& memory);
    /// Functions of the frames received, in order.
    std::vector<uint8_t> heard() const;

  private:
    uint32_t serve();
    void answer(const std::vector<uint8_t>& frame);

    const std::unique_ptr<sim_line> line_;
    mutable std::mutex lock_;
    std::array<uint8_t, 3> memory_{0, 7, 1};
    std::vector<uint8_t> heard_;
    worker thread_; // last: it uses the others
};
