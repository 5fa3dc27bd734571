// SPDX-License-Identifier: Apache-2.0
// What the core's headers promise, used with the types they promise. It is compiled and never run.

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/host_types.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/types.h"
#include "headsetmgmt/utilities.h"

#include "tests/headers/declared.h"

namespace declared {

using headsetmgmt::Plugins;

// The plug-in record.

static_assert(offsetof(Plugins, log) < offsetof(Plugins, dispatcher));
static_assert(offsetof(Plugins, dispatcher) < offsetof(Plugins, config_driver));
static_assert(offsetof(Plugins, config_driver) < offsetof(Plugins, system_info));
static_assert(offsetof(Plugins, system_info) < offsetof(Plugins, executor));
static_assert(offsetof(Plugins, executor) < offsetof(Plugins, mutex_factory));

void use_plugins() {
    Plugins plugins;
    expect_type<headsetmgmt::log::HostLogInterface*&>(plugins.log);
    expect_type<headsetmgmt::dispatcher::DispatcherInterface*&>(plugins.dispatcher);
    expect_type<headsetmgmt::config::HostConfigDriverInterface*&>(plugins.config_driver);
    expect_type<headsetmgmt::SystemInfoInterface*&>(plugins.system_info);
    expect_type<headsetmgmt::ExecutorInterface*&>(plugins.executor);
    expect_type<headsetmgmt::MutexFactoryInterface*&>(plugins.mutex_factory);
    expect_type<bool>(plugins.is_valid());

    expect_type<Plugins&>(headsetmgmt::globals::plugins);
    expect_type<bool (*)(Plugins&)>(&headsetmgmt::init);
}

// Enumerations: their members by bare name, in 32 bits.

static_assert(headsetmgmt::UNKNOWN == 0);
static_assert(headsetmgmt::HEADSET == 1);
static_assert(headsetmgmt::CAMERA == 2);
static_assert(headsetmgmt::MAX_ACCESSORY_TYPE == 3);
static_assert(std::is_same_v<decltype(headsetmgmt::CAMERA), headsetmgmt::ACCESSORY_TYPE>);
static_assert(sizeof(headsetmgmt::ACCESSORY_TYPE) == sizeof(std::int32_t));

static_assert(sizeof(headsetmgmt::RequestStatus) == sizeof(std::int32_t));

static_assert(headsetmgmt::config::CONFIGURE == 0);
static_assert(headsetmgmt::config::RESET == 1);
static_assert(std::is_same_v<decltype(headsetmgmt::config::RESET), headsetmgmt::config::ApplyType>);
static_assert(headsetmgmt::config::ApplyType::RESET == headsetmgmt::config::RESET);
static_assert(sizeof(headsetmgmt::config::ApplyType) == sizeof(std::int32_t));

static_assert(headsetmgmt::log::critical == 0);
static_assert(headsetmgmt::log::error == 1);
static_assert(headsetmgmt::log::warning == 2);
static_assert(headsetmgmt::log::notice == 3);
static_assert(headsetmgmt::log::info == 4);
static_assert(headsetmgmt::log::debug == 5);
static_assert(std::is_same_v<decltype(headsetmgmt::log::debug), headsetmgmt::log::LogLevel>);
static_assert(headsetmgmt::log::LogLevel::error == headsetmgmt::log::error);
static_assert(sizeof(headsetmgmt::log::LogLevel) == sizeof(std::int32_t));

static_assert(sizeof(::CONFIG_SETTING_USAGE_ID) == sizeof(std::int32_t));
static_assert(sizeof(::HttpRequestType) == sizeof(std::int32_t));

// Log lines.

class LogSink : public headsetmgmt::log::HostLogInterface {
public:
    ~LogSink() override = default;
    int map_to_host_log_level(headsetmgmt::log::LogLevel level) const override { return level; }
    void print(headsetmgmt::log::LogLevel /*level*/, const std::string& /*line*/) override {}
};

static_assert(std::is_abstract_v<headsetmgmt::log::HostLogInterface>);
static_assert(std::has_virtual_destructor_v<headsetmgmt::log::HostLogInterface>);
static_assert(std::has_virtual_destructor_v<headsetmgmt::log::Logger>);
static_assert(std::has_virtual_destructor_v<headsetmgmt::log::LogStream>);

void use_log(LogSink& sink, const std::string& name, char* text) {
    using headsetmgmt::log::Logger;
    using headsetmgmt::log::LogStream;

    Logger* const made = ::create_logger(&sink, name, true);
    ::delete_logger(made);
    Logger* const made_beside_its_class = headsetmgmt::log::create_logger(&sink, name, true);
    headsetmgmt::log::delete_logger(made_beside_its_class);

    Logger logger(&sink, name, true);
    expect_type<LogStream>(logger.critical());
    expect_type<LogStream>(logger.error());
    expect_type<LogStream>(logger.warning());
    expect_type<LogStream>(logger.notice());
    expect_type<LogStream>(logger.info());
    expect_type<LogStream>(logger.debug());

    LogStream stream(&sink, headsetmgmt::log::notice, name, true);
    const char* const constant_text = "constant";
    expect_type<LogStream&>(stream << name);
    expect_type<LogStream&>(stream << constant_text);
    expect_type<LogStream&>(stream << text);
    expect_type<LogStream&>(stream << "literal");
    expect_type<LogStream&>(stream << 1);
    expect_type<LogStream&>(stream << 1U);
    expect_type<LogStream&>(stream << 1UL);
    expect_type<LogStream&>(stream << 1.5);
    expect_type<LogStream&>(stream << true);
    stream.flush();
}

// Texts, models and waiting times.

void use_utilities(std::string& text, char* const& characters,
                   headsetmgmt::AccessoryInfoInterface* accessory) {
    to_lower(text);
    expect_type<bool>(equals_ignore_case(text, "literal"));
    expect_type<bool>(is_alpha(text));
    expect_type<bool>(is_naming_corrupted(text));
    expect_type<bool>(is_number<char*>(characters));
    const int number = 7;
    expect_type<std::string>(stringconverter::to_string<int>(number));
    expect_type<std::string>(stringconverter::to_string<char*>(characters));

    expect_type<std::string>(get_headset_model(text, text));
    expect_type<std::string>(get_headset_model(accessory));
    expect_type<bool>(isVarosHeadset(accessory));
    expect_type<bool>(headset_support_downgrade(accessory));
    expect_type<std::string>(accessory_type_to_string(headsetmgmt::HEADSET));

    sleep_for(1U);
    expect_type<unsigned int>(get_seconds_to_wait(1U, 2U));
}

}  // namespace declared
