// SPDX-License-Identifier: Apache-2.0
// Makes calls of the threads library fail, and counts them.

#include "support/failing_pthread.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>

namespace headsetmgmt::test_support {

namespace {

// Sanitizers call these functions from threads that they have not set up yet. So this file is built
// without them, and it uses nothing that they watch or that could come from a file built with them:
// no template of the standard library and no static that has to be constructed.
constexpr int pass_on = -1;  // not an error number, so it stands for "no answer"
constexpr int functions = 9;

int results[functions] = {pass_on, pass_on, pass_on, pass_on, pass_on,
                          pass_on, pass_on, pass_on, pass_on};
bool answers_given[functions] = {};
int calls[functions] = {};
int latest_kind = -1;
int latest_policy = -1;
int latest_priority = -1;

/// What this call is to answer; `pass_on` when the system is to be asked.
int take_answer(PthreadCall call) {
    const int index = static_cast<int>(call);
    __atomic_add_fetch(&calls[index], 1, __ATOMIC_SEQ_CST);
    const int result = __atomic_exchange_n(&results[index], pass_on, __ATOMIC_SEQ_CST);
    if (result != pass_on) {
        __atomic_store_n(&answers_given[index], true, __ATOMIC_SEQ_CST);
    }
    return result;
}

/// The function that the program would call if it had none of that name, looked up once.
void* next_function(void** known, const char* name) {
    void* function = __atomic_load_n(known, __ATOMIC_SEQ_CST);
    if (function == nullptr) {
        function = dlsym(RTLD_NEXT, name);
        __atomic_store_n(known, function, __ATOMIC_SEQ_CST);
    }
    return function;
}

}  // namespace

PthreadAnswer::PthreadAnswer(PthreadCall call, int result) : answered(call) {
    const int index = static_cast<int>(call);
    __atomic_store_n(&answers_given[index], false, __ATOMIC_SEQ_CST);
    __atomic_store_n(&results[index], result, __ATOMIC_SEQ_CST);
}

PthreadAnswer::~PthreadAnswer() {
    __atomic_store_n(&results[static_cast<int>(answered)], pass_on, __ATOMIC_SEQ_CST);
}

bool PthreadAnswer::given() const {
    return __atomic_load_n(&answers_given[static_cast<int>(answered)], __ATOMIC_SEQ_CST);
}

int calls_of(PthreadCall call) {
    return __atomic_load_n(&calls[static_cast<int>(call)], __ATOMIC_SEQ_CST);
}

int latest_mutex_kind() {
    return __atomic_load_n(&latest_kind, __ATOMIC_SEQ_CST);
}

SchedulingRequest latest_scheduling_request() {
    return {__atomic_load_n(&latest_policy, __ATOMIC_SEQ_CST),
            __atomic_load_n(&latest_priority, __ATOMIC_SEQ_CST)};
}

}  // namespace headsetmgmt::test_support

using namespace headsetmgmt::test_support;

#define HEADSETMGMT_INTERPOSED extern "C" __attribute__((visibility("default")))

// Passes the arguments on, unless the call is to be answered here.
#define HEADSETMGMT_ANSWER_OR_CALL(call, function, ...)                                            \
    const int answer = take_answer(call);                                                          \
    if (answer != pass_on) {                                                                       \
        return answer;                                                                             \
    }                                                                                              \
    static void* known = nullptr;                                                                  \
    return reinterpret_cast<decltype(&(function))>(next_function(&known, #function))(__VA_ARGS__)

HEADSETMGMT_INTERPOSED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                          void* (*start)(void*), void* argument) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::create, pthread_create, thread, attributes, start,
                               argument);
}

HEADSETMGMT_INTERPOSED int pthread_attr_init(pthread_attr_t* attributes) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::attr_init, pthread_attr_init, attributes);
}

HEADSETMGMT_INTERPOSED int pthread_attr_setdetachstate(pthread_attr_t* attributes,
                                                       int state) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::attr_setdetachstate, pthread_attr_setdetachstate,
                               attributes, state);
}

HEADSETMGMT_INTERPOSED int pthread_mutex_init(pthread_mutex_t* mutex,
                                              const pthread_mutexattr_t* attributes) noexcept {
    int kind = PTHREAD_MUTEX_DEFAULT;
    if (attributes != nullptr) {
        pthread_mutexattr_gettype(attributes, &kind);
    }
    __atomic_store_n(&latest_kind, kind, __ATOMIC_SEQ_CST);
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::mutex_init, pthread_mutex_init, mutex, attributes);
}

HEADSETMGMT_INTERPOSED int pthread_mutexattr_init(pthread_mutexattr_t* attributes) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::mutexattr_init, pthread_mutexattr_init, attributes);
}

HEADSETMGMT_INTERPOSED int pthread_join(pthread_t thread, void** result) {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::join, pthread_join, thread, result);
}

HEADSETMGMT_INTERPOSED int pthread_detach(pthread_t thread) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::detach, pthread_detach, thread);
}

HEADSETMGMT_INTERPOSED int pthread_getschedparam(pthread_t thread, int* policy,
                                                 sched_param* parameters) noexcept {
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::getschedparam, pthread_getschedparam, thread, policy,
                               parameters);
}

HEADSETMGMT_INTERPOSED int pthread_setschedparam(pthread_t thread, int policy,
                                                 const sched_param* parameters) noexcept {
    __atomic_store_n(&latest_policy, policy, __ATOMIC_SEQ_CST);
    __atomic_store_n(&latest_priority, parameters->sched_priority, __ATOMIC_SEQ_CST);
    HEADSETMGMT_ANSWER_OR_CALL(PthreadCall::setschedparam, pthread_setschedparam, thread, policy,
                               parameters);
}
