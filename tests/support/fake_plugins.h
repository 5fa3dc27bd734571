// SPDX-License-Identifier: Apache-2.0
// A plug-in record full of fakes, installed for the life of a test.

#pragma once

#include "headsetmgmt/plugins.h"

#include "support/fake_config_driver.h"
#include "support/fake_dispatcher.h"
#include "support/fake_executor.h"
#include "support/fake_mutex_factory.h"
#include "support/fake_system_info.h"
#include "support/recording_log.h"

namespace headsetmgmt::test_support {

/// One fake of each interface, as the core's plug-in record from construction to destruction; then
/// the record is again what it was. Needs the core linked statically. Declare it before everything
/// that uses the record.
class FakePlugins {
public:
    FakePlugins() : before(globals::plugins) {
        record.log = &log;
        record.dispatcher = &dispatcher;
        record.config_driver = &config_driver;
        record.system_info = &system_info;
        record.executor = &executor;
        record.mutex_factory = &mutex_factory;
        init(record);
    }
    ~FakePlugins() { globals::plugins = before; }

    FakePlugins(const FakePlugins&) = delete;
    FakePlugins& operator=(const FakePlugins&) = delete;

    RecordingLog log;
    FakeDispatcher dispatcher;
    FakeConfigDriver config_driver;
    FakeSystemInfo system_info;
    FakeMutexFactory mutex_factory;
    FakeExecutor executor;

    /// The record as it was installed, for tests that install it with other members.
    Plugins record;

private:
    Plugins before;
};

}  // namespace headsetmgmt::test_support
