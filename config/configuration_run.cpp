// SPDX-License-Identifier: Apache-2.0
// The manager's configuration run: from an accessory that needs a configuration to the document in
// every object of the pending set.

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "headsetmgmt/plugins.h"

#include "config/config_accessory_params.h"
#include "config/config_manager_impl.h"
#include "core/locks.h"

namespace headsetmgmt::config {

namespace {

using FlagLock = ScopedLock<MutexOwner>;

/// A fetch that counts as queued until it begins or is dropped: it holds `reference`.
class QueuedFetch : public ConfigAccessoryParams {
public:
    QueuedFetch(ConfigInterface* object, std::shared_ptr<void> reference)
        : ConfigAccessoryParams(object), queue_reference(std::move(reference)) {}

    TaskParametersInterface* clone() const override {
        auto* copy = new QueuedFetch(*this);
        queue_reference.reset();  // the copy is queued, and one fetch counts once
        return copy;
    }
    void leave_queue() { queue_reference.reset(); }

private:
    mutable std::shared_ptr<void> queue_reference;
};

}  // namespace

bool ConfigManagerImpl::configure_accessory(const std::string& id, std::string config_url) {
    const RegistryHold hold(*this);
    logger->notice() << "configure_accessory: ENTER";
    ConfigInterface* config = find(id);
    logger->notice() << "configure_accessory:" << id;
    // Here and below, the log callback may have removed it again.
    if (config == nullptr || !is_registered(id, config)) {
        logger->notice() << "configure_accessory: can't configure uninitialized accessory!";
        return false;
    }
    // Even if the accessory turns out not to need a configuration: it then stays in the set until
    // the end of the next run, and takes part in it.
    mark_config_object_pending(config);
    if (!config->is_config_required(config_url)) {
        logger->notice() << "configure_accessory: Config not required.";
        return false;
    }
    if (!is_registered(id, config)) {
        return false;  // removed on one of the object's lines
    }
    if (!config_url.empty()) {
        for (const auto& entry : registry) {
            mark_config_object_pending(entry.second);
        }
        // No blank before the word: the text is fixed, like others without separators in this file.
        logger->notice() << "configure_accessory for " << get_number_of_pending_configs()
                         << "accessories";
    }
    // While its document is handed out, a run is under way even if its last accessory was removed.
    if (is_configure_accessory_pending() || handing_out) {
        logger->notice()
            << "configure_accessory: previous configure_accessory is in progress, ignore this one";
        return true;
    }
    set_configure_accessory_pending(true);
    queue_fetch(config);
    logger->notice() << "configure_accessory: added async task";
    return true;
}

void ConfigManagerImpl::configure_accessory_task(TaskParametersInterface* params) {
    if (params == nullptr) {
        logger->error() << "configure_accessory_task: no task parameters";
        return;
    }
    if (auto* queued = dynamic_cast<QueuedFetch*>(params)) {
        queued->leave_queue();
    }
    const auto* fetch = dynamic_cast<ConfigAccessoryParams*>(params);
    ConfigInterface* config = fetch != nullptr ? fetch->get_config() : nullptr;
    if (config == nullptr) {
        clean_up_pending_config_requests();
        return;
    }
    RequestStatus status = REQUEST_REFUSED;
    try {
        request_document(*config, status);
    } catch (...) {
        // If an answer is outstanding, it continues the run.
        if (status != REQUEST_PENDING) {
            end_run_without_fetch();
        }
        throw;
    }
}

/// Requests the document for the pending set; `config` is the task's own copy of an object.
void ConfigManagerImpl::request_document(ConfigInterface& config, RequestStatus& status) {
    std::string id;
    const unsigned int pending = get_number_of_pending_configs();
    if (pending > 1) {
        logger->notice() << "configure_accessory_task" << pending << " pending accessories";
    } else {
        id = config.get_accessory_id();
        logger->notice() << "configure_accessory_task id:" << id;
    }
    const std::string url = config.get_config_url();
    // Only in the copy, which ends with the task: within a run, every fetch is a first one.
    config.set_config_retries(config.get_config_retries() + 1);

    std::string document;
    status = fetch_config(url, document);
    const ConfigureResponse response(status);
    switch (status) {
    case REQUEST_DONE:
        on_fetch_config_success(document);
        break;
    case REQUEST_REFUSED:
        logger->notice() << "configure_accessory_task: currently unable to fetch config";
        globals::plugins.config_driver->on_failure(id, response);
        clean_up_pending_config_requests();
        break;
    case REQUEST_PENDING:
        logger->notice() << "configure_accessory_task: pending fetch config";
        globals::plugins.config_driver->on_pending(id, response);
        break;
    default:
        logger->notice() << "configure_accessory_task: unknown status from fetch_config";
        clean_up_pending_config_requests();
        break;
    }
}

RequestStatus ConfigManagerImpl::fetch_config(const std::string& url, std::string& document) {
    dispatcher::RequestContext context;
    context.url = url;
    context.requester = "CONFIGMGR";
    return static_cast<RequestStatus>(globals::plugins.dispatcher->get(&context, document));
}

bool ConfigManagerImpl::on_fetch_config_success(std::string& document) {
    // Held until the end of the run: an accessory that is attached in between would be lost.
    const RegistryHold hold(*this);
    // A document that arrives during the hand-out is dropped, too: otherwise a host function that
    // delivers one would make objects parse inside their own parse, deeper and deeper.
    if (!is_configure_accessory_pending() || handing_out) {
        logger->error() << "on_fetch_config_success: no configuration in progress, dropping data";
        return false;
    }
    std::vector<std::string> newcomers;
    handing_out = true;
    try {
        newcomers = hand_out(document);
    } catch (...) {
        handing_out = false;
        clean_up_pending_config_requests();
        throw;
    }
    handing_out = false;
    clean_up_pending_config_requests();
    logger->notice() << "on_fetch_config_successExit";
    for (const std::string& id : newcomers) {
        configure_accessory(id, "");
    }
    return true;
}

/// Passes the document to every object of the pending set. Returns the ids of accessories that host
/// functions attached meanwhile: they have joined the run too late for its document.
std::vector<std::string> ConfigManagerImpl::hand_out(const std::string& document) {
    // Calls of the host may change the set meanwhile.
    const std::vector<ConfigInterface*> snapshot(pending_set.begin(), pending_set.end());
    for (ConfigInterface* config : snapshot) {
        if (pending_set.count(config) == 0) {
            continue;  // removed
        }
        if (config == nullptr) {
            logger->error() << "on_fetch_config_success: No pending config object";
        } else {
            hand_to(*config, document);
        }
    }
    // No object of the snapshot is deleted while the registry is held, so their addresses name
    // them; they are in the order of the set.
    std::vector<std::string> newcomers;
    for (ConfigInterface* config : pending_set) {
        if (!std::binary_search(snapshot.begin(), snapshot.end(), config, std::less<>())) {
            newcomers.push_back(config->get_accessory_id());
        }
    }
    return newcomers;
}

/// Passes the document to one object. A failure does not affect the other objects.
void ConfigManagerImpl::hand_to(ConfigInterface& config, const std::string& document) {
    bool updated = false;
    try {
        updated = config.update_from_server(document);
    } catch (const std::exception& error) {
        logger->error() << "on_fetch_config_success: " << error.what();
    } catch (...) {
        logger->error() << "on_fetch_config_success: unknown exception";
    }
    if (updated) {
        return;
    }
    logger->error()
        << "on_fetch_config_success: unable to update config retrieved from server in library";
    try {
        globals::plugins.config_driver->on_failure(config.get_accessory_id(),
                                                   ConfigureResponse(REQUEST_REFUSED));
    } catch (const std::exception& error) {
        logger->error() << "on_fetch_config_success: " << error.what();
    } catch (...) {
        logger->error() << "on_fetch_config_success: unknown exception";
    }
}

bool ConfigManagerImpl::on_fetch_config_failure(int reason) {
    const RegistryHold hold(*this);
    logger->notice() << "on_fetch_config_failure reason code: " << reason;
    if (!is_configure_accessory_pending()) {
        logger->error() << "on_fetch_config_failure: no configuration in progress, dropping data";
        return false;
    }
    ConfigInterface* config = get_pending_config_object(0);
    if (config == nullptr) {
        clean_up_pending_config_requests();
        return false;
    }
    constexpr int retry_limit = 2;
    if (config->get_config_retries() > retry_limit) {
        logger->error() << "on_fetch_config_failure : retry limit reached, abort";
        clean_up_pending_config_requests();
        return false;
    }
    queue_fetch(config);
    return true;
}

/// Number of fetches that have not begun.
long ConfigManagerImpl::fetches_queued() const {
    return queue_reference.use_count() - 1;
}

/// Queues a fetch for `config`, of which the task gets a copy.
void ConfigManagerImpl::queue_fetch(ConfigInterface* config) {
    // The only limit for a host that answers too often, or whose requests do not return. The queued
    // fetches continue the run.
    constexpr long most_fetches_queued = 100;
    if (fetches_queued() >= most_fetches_queued) {
        return;
    }
    try {
        QueuedFetch params(config, queue_reference);
        globals::plugins.executor->add_task(task_forwarder, this, &params);
    } catch (...) {
        end_run_without_fetch();
        throw;
    }
}

/// Ends the run after an exception in a fetch if no other is queued: otherwise no accessory would
/// be configured again.
void ConfigManagerImpl::end_run_without_fetch() {
    const RegistryHold hold(*this);
    if (is_configure_accessory_pending() && fetches_queued() == 0) {
        clean_up_pending_config_requests();
    }
}

void ConfigManagerImpl::mark_config_object_pending(ConfigInterface* config) {
    const RegistryHold hold(*this);
    pending_set.insert(config);
}

ConfigInterface* ConfigManagerImpl::get_pending_config_object(int index) {
    const RegistryHold hold(*this);
    if (index < 0 || static_cast<std::size_t>(index) >= pending_set.size()) {
        return nullptr;
    }
    return *std::next(pending_set.begin(), index);
}

unsigned int ConfigManagerImpl::get_number_of_pending_configs() {
    const RegistryHold hold(*this);
    return static_cast<unsigned int>(pending_set.size());
}

bool ConfigManagerImpl::is_configure_accessory_pending() {
    const FlagLock flag_lock(flag_mutex);
    return configure_pending;
}

void ConfigManagerImpl::set_configure_accessory_pending(bool pending) {
    const FlagLock flag_lock(flag_mutex);
    configure_pending = pending;
}

void ConfigManagerImpl::clean_up_pending_config_requests() {
    // One hold for the flag and the set: an accessory that is attached in between would be lost.
    const RegistryHold hold(*this);
    set_configure_accessory_pending(false);
    for (ConfigInterface* config : pending_set) {
        if (config != nullptr) {
            config->set_config_retries(0);
        }
    }
    pending_set.clear();
    // Logged last: an accessory that the log callback attaches before would join the ended run, and
    // be lost.
    logger->notice() << "clean_up_pending_config_requests: ENTER";
}

}  // namespace headsetmgmt::config
