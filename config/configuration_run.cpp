// The manager's configuration run: from an accessory that wants configuring to the document in
// every object of the pending set.

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "headsetmgmt/plugins.h"

#include "config/config_accessory_params.h"
#include "config/config_manager_impl.h"

namespace headsetmgmt::config {

namespace {

using FlagLock = std::lock_guard<MutexInterface>;

}  // namespace

bool ConfigManagerImpl::configure_accessory(const std::string& id, std::string config_url) {
    const RegistryHold hold(*this);
    logger->notice() << "configure_accessory: ENTER";
    ConfigInterface* config = get_config_object(id);
    logger->notice() << "configure_accessory:" << id;
    // Here and below, the log callback may have removed it again.
    if (config == nullptr || !is_registered(id, config)) {
        logger->notice() << "configure_accessory: can't configure uninitialized accessory!";
        return false;
    }
    // Before it is known whether the accessory needs configuring; one that does not stays in the
    // set until the end of the next run, and takes part in it.
    mark_config_object_pending(config);
    if (!config->is_config_required(config_url)) {
        logger->notice() << "configure_accessory: Config not required.";
        return false;
    }
    if (!is_registered(id, config)) {
        return false;
    }
    if (!config_url.empty()) {
        for (const auto& entry : registry) {
            mark_config_object_pending(entry.second);
        }
        // No blank before the word: the line is known as it is, as are all that run into each other
        // in this file.
        logger->notice() << "configure_accessory for " << get_number_of_pending_configs()
                         << "accessories";
    }
    // While its document is handed out a run is under way, even if its last accessory has left.
    if (is_configure_accessory_pending() || handing_out) {
        logger->notice()
            << "configure_accessory: previous configure_accessory is in progress, ignore this one";
        return true;
    }
    set_configure_accessory_pending(true);
    reserve_wanted = false;
    try {
        queue_fetch(config, FetchKind::first);
    } catch (...) {
        // No task, no run: or no accessory would ever be configured again.
        if (queued(FetchKind::first) == 0) {
            set_configure_accessory_pending(false);
        }
        throw;
    }
    logger->notice() << "configure_accessory: added async task";
    return true;
}

void ConfigManagerImpl::configure_accessory_task(TaskParametersInterface* params) {
    if (params == nullptr) {
        logger->error() << "configure_accessory_task: no task parameters";
        return;
    }
    auto* fetch = dynamic_cast<ConfigAccessoryParams*>(params);
    ConfigInterface* config = fetch != nullptr ? fetch->get_config() : nullptr;
    if (!begin_fetch(fetch != nullptr ? fetch->get_kind() : FetchKind::first, config)) {
        return;
    }
    if (config == nullptr) {
        clean_up_pending_config_requests();
        return;
    }
    try {
        request_document(*config);
    } catch (...) {
        end_run_without_fetch(config);
        throw;
    }
}

/// Requests the document for the pending set; `config` is the task's own copy of an object.
void ConfigManagerImpl::request_document(ConfigInterface& config) {
    std::string id;
    const unsigned int pending = get_number_of_pending_configs();
    if (pending > 1) {
        logger->notice() << "configure_accessory_task" << pending << " pending accessories";
    } else {
        id = config.get_accessory_id();
        logger->notice() << "configure_accessory_task id:" << id;
    }
    std::string url = config.get_config_url();
    // Of the copy alone, which ends with the task: within a run, every fetch is a first one.
    config.set_config_retries(config.get_config_retries() + 1);

    {
        // Before the request, which may be answered before it returns.
        const RegistryHold hold(*this);
        ++requests_unanswered;
    }
    std::string document;
    RequestStatus status = REQUEST_REFUSED;
    try {
        status = fetch_config(std::move(url), document);
    } catch (...) {
        count_answer();
        throw;
    }
    const ConfigureResponse response(status);
    switch (status) {
    case REQUEST_DONE:
        on_fetch_config_success(document);
        break;
    case REQUEST_REFUSED:
        count_answer();
        logger->notice() << "configure_accessory_task: currently unable to fetch config";
        globals::plugins.config_driver->on_failure(id, response);
        clean_up_pending_config_requests();
        break;
    case REQUEST_PENDING:
        logger->notice() << "configure_accessory_task: pending fetch config";
        globals::plugins.config_driver->on_pending(id, response);
        break;
    default:
        count_answer();
        logger->notice() << "configure_accessory_task: unknown status from fetch_config";
        clean_up_pending_config_requests();
        break;
    }
}

RequestStatus ConfigManagerImpl::fetch_config(std::string url, std::string& document) {
    dispatcher::RequestContext context;
    context.url = std::move(url);
    context.requester = "CONFIGMGR";
    return static_cast<RequestStatus>(globals::plugins.dispatcher->get(&context, document));
}

bool ConfigManagerImpl::on_fetch_config_success(std::string& document) {
    // To the end of the run: an accessory that is attached in between would be lost.
    const RegistryHold hold(*this);
    count_answer();
    if (!is_awaiting_document()) {
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

/// Hands the document to every object of the pending set. Answers the ids of accessories that host
/// functions attached meanwhile: they have joined the run, but after its document. The registry is
/// held.
std::vector<std::string> ConfigManagerImpl::hand_out(const std::string& document) {
    // What the host calls meanwhile may change the set.
    const std::vector<ConfigInterface*> snapshot(pending_set.begin(), pending_set.end());
    for (ConfigInterface* config : snapshot) {
        if (pending_set.count(config) == 0) {
            continue;  // it has left
        }
        if (config == nullptr) {
            logger->error() << "on_fetch_config_success: No pending config object";
        } else {
            hand_to(*config, document);
        }
    }
    // No object of the snapshot is deleted before the registry is let go, so addresses tell; they
    // are in the order of the set.
    std::vector<std::string> newcomers;
    for (ConfigInterface* config : pending_set) {
        if (!std::binary_search(snapshot.begin(), snapshot.end(), config, std::less<>())) {
            newcomers.push_back(config->get_accessory_id());
        }
    }
    return newcomers;
}

/// Hands the document to one object. Whatever goes wrong with it, the others get theirs.
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
    count_answer();
    logger->notice() << "on_fetch_config_failure reason code: " << reason;
    if (!is_awaiting_document()) {
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
    constexpr unsigned int most_retries_queued = 100;
    if (queued(FetchKind::retry) >= most_retries_queued) {
        return true;  // a host tells of failures faster than the worker can look at them
    }
    try {
        queue_fetch(config, FetchKind::retry);
    } catch (...) {
        end_run_without_fetch(config);
        throw;
    }
    return true;
}

/// Whether an answer is wanted: a run is under way, and its document is not being handed out by
/// this very thread. The registry is held.
bool ConfigManagerImpl::is_awaiting_document() {
    return is_configure_accessory_pending() && !handing_out;
}

/// Books an answer. It does not say which request it is for, and may be a second one.
void ConfigManagerImpl::count_answer() {
    const RegistryHold hold(*this);
    reserve_wanted = false;
    if (requests_unanswered != 0) {
        --requests_unanswered;
    }
}

/// Books the beginning of a queued fetch; false when it is not to be made.
///
/// A retry is made only when nothing else goes on with the run: neither another retry nor an answer
/// that is still to come. Were each failure to lead to a request, there would be one more, for as
/// long as the server fails, with each request that is answered twice, and with each accessory that
/// leaves and comes back before its answer.
bool ConfigManagerImpl::begin_fetch(FetchKind kind, ConfigInterface* config) {
    const RegistryHold hold(*this);
    if (queued(kind) != 0) {
        --queued(kind);
    }
    const bool is_retry_queued = queued(FetchKind::retry) != 0;
    switch (kind) {
    case FetchKind::retry:
        if (!is_retry_queued && requests_unanswered != 0) {
            keep_in_reserve(config);
            return false;
        }
        return !is_retry_queued;
    case FetchKind::reserve:
        return std::exchange(reserve_wanted, false) && is_configure_accessory_pending() &&
               !is_retry_queued && queued(FetchKind::first) == 0;
    default:
        return true;
    }
}

/// Ends the run when neither a fetch nor an answer can go on with it, after a fetch that came to
/// nothing.
void ConfigManagerImpl::end_run_without_fetch(ConfigInterface* config) {
    const RegistryHold hold(*this);
    if (!is_configure_accessory_pending() || queued(FetchKind::first) != 0 ||
        queued(FetchKind::retry) != 0) {
        return;
    }
    if (requests_unanswered == 0) {
        clean_up_pending_config_requests();
        return;
    }
    keep_in_reserve(config);
}

/// Fetches that have not begun. The registry is held.
unsigned int& ConfigManagerImpl::queued(FetchKind kind) {
    return fetches_queued.at(static_cast<std::size_t>(kind));
}

/// Queues a fetch for `config`, of which the task gets a copy. The registry is held.
void ConfigManagerImpl::queue_fetch(ConfigInterface* config, FetchKind kind) {
    ConfigAccessoryParams params(config, kind);
    ++queued(kind);  // the task, which takes it back, waits for the registry
    try {
        globals::plugins.executor->add_task(task_forwarder, this, &params);
    } catch (...) {
        --queued(kind);
        throw;
    }
}

/// Sees to it that the run goes on if the host has lost the answer that it waits for: with one
/// fetch later, unless an answer comes before. The registry is held.
void ConfigManagerImpl::keep_in_reserve(ConfigInterface* config) {
    reserve_wanted = true;
    if (queued(FetchKind::reserve) != 0) {
        return;
    }
    try {
        queue_fetch(config, FetchKind::reserve);
    } catch (...) {
        // Memory has run out: the answer itself has to come.
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
    const FlagLock flag_lock(*flag_mutex);
    return configure_pending;
}

void ConfigManagerImpl::set_configure_accessory_pending(bool pending) {
    const FlagLock flag_lock(*flag_mutex);
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
    // Last: what the log callback attaches here starts a run of its own.
    logger->notice() << "clean_up_pending_config_requests: ENTER";
}

}  // namespace headsetmgmt::config
