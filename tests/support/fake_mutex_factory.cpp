// SPDX-License-Identifier: Apache-2.0
// A factory of working mutexes that counts locks and can fail at a chosen call.

#include "support/fake_mutex_factory.h"

#include <stdexcept>

namespace headsetmgmt::test_support {

namespace {

using Lock = std::lock_guard<std::mutex>;

}  // namespace

template <typename Lockable>
class FakeMutexFactory::CountingMutex : public MutexInterface {
public:
    explicit CountingMutex(FakeMutexFactory& maker) : factory(maker) {}

    bool lock() override {
        factory.fail_lock_if_chosen();
        lockable.lock();
        factory.count_held(1);
        return true;
    }

    void unlock() override {
        factory.count_held(-1);
        // The mutex itself may be deleted once it is unlocked.
        FakeMutexFactory& maker = factory;
        lockable.unlock();
        if (maker.on_unlock) {
            maker.on_unlock();
        }
    }

private:
    FakeMutexFactory& factory;
    Lockable lockable;
};

std::vector<bool> FakeMutexFactory::recursive_choices() const {
    const Lock lock(mutex);
    return choices;
}

std::size_t FakeMutexFactory::made() const {
    const Lock lock(mutex);
    return choices.size();
}

std::size_t FakeMutexFactory::deleted() const {
    const Lock lock(mutex);
    return deletions;
}

int FakeMutexFactory::held() const {
    const Lock lock(mutex);
    int sum = 0;
    for (const auto& holder : holders) {
        sum += holder.second;
    }
    return sum;
}

int FakeMutexFactory::held_by_this_thread() const {
    const Lock lock(mutex);
    const auto holder = holders.find(std::this_thread::get_id());
    return holder != holders.end() ? holder->second : 0;
}

MutexInterface* FakeMutexFactory::create_mutex(bool recursive) {
    if (creation_fault.is_now()) {
        throw std::runtime_error("fake mutex factory");
    }
    {
        const Lock lock(mutex);
        choices.push_back(recursive);
    }
    if (recursive) {
        return new CountingMutex<std::recursive_mutex>(*this);
    }
    return new CountingMutex<std::mutex>(*this);
}

void FakeMutexFactory::delete_mutex(MutexInterface* made_here) {
    if (made_here == nullptr) {
        return;
    }
    {
        const Lock lock(mutex);
        ++deletions;
    }
    delete made_here;
}

void FakeMutexFactory::fail_lock_if_chosen() {
    if (lock_fault.is_now()) {
        throw std::runtime_error("fake mutex");
    }
}

void FakeMutexFactory::count_held(int change) {
    const Lock lock(mutex);
    const auto holder = holders.try_emplace(std::this_thread::get_id(), 0).first;
    holder->second += change;
    if (holder->second == 0) {
        holders.erase(holder);
    }
}

}  // namespace headsetmgmt::test_support
