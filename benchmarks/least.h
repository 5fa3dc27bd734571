// SPDX-License-Identifier: Apache-2.0
// The least of what the library is given: a log sink that drops its lines, and a task's parameters
// that carry nothing.

#pragma once

#include <string>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"

namespace headsetmgmt::benchmarks {

class NoLog : public log::HostLogInterface {
public:
    int map_to_host_log_level(log::LogLevel /*level*/) const override { return 0; }
    void print(log::LogLevel /*level*/, const std::string& /*line*/) override {}
};

class Errand : public TaskParametersInterface {
public:
    Errand() = default;
    Errand(const Errand&) = default;

    TaskParametersInterface* clone() const override { return new Errand(*this); }
    int get_type() const override { return 0; }
    int check_status() override { return ready; }
};

}  // namespace headsetmgmt::benchmarks
