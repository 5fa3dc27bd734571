// Tests of a thread in a program whose threads have many variables of their own: they lie in each
// thread's stack, and must not take the room of its work.

#include <cstddef>

#include <gtest/gtest.h>

#include "runtime/thread.h"

namespace vix {
namespace {

constexpr std::size_t variables_size = std::size_t{512} * 1024;
constexpr std::size_t work_size = std::size_t{200} * 1024;

thread_local volatile char variables[variables_size];

void use(volatile char* memory, std::size_t size) {
    constexpr std::size_t page_size = 4096;
    for (std::size_t place = 0; place < size; place += page_size) {
        memory[place] = 1;
    }
}

class WorkingThread : public Thread {
public:
    bool done = false;

protected:
    bool threadLoop() override {
        volatile char room[work_size];
        use(room, work_size);
        use(variables, variables_size);
        done = true;
        return false;
    }
};

TEST(ThreadVariablesTest, TakeNoneOfTheRoomOfTheWork) {
    WorkingThread thread;

    ASSERT_TRUE(thread.run(nullptr, 0, 0));
    ASSERT_TRUE(thread.join());

    EXPECT_TRUE(thread.done);
}

}  // namespace
}  // namespace vix
