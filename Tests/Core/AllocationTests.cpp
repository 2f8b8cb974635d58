#include "QuillmereCore/Config.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace quillmere {
namespace {

TEST(Allocation, FindingTheGroupOfAKeyPressAllocatesNothing) {
    Config config;
    for (std::int64_t key = 0; key < 50; ++key)
        config.groups.push_back({makeUUID(), Shortcut{key, Modifiers::control}, {std::string(100, 'x')}});
    const std::size_t before = allocations;
    const CycleGroup* found = config.group(Shortcut{49, Modifiers::control});
    const CycleGroup* missing = config.group(Shortcut{50, Modifiers::control});
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(found, &config.groups.back());
    EXPECT_EQ(missing, nullptr);
    EXPECT_GT(before, 50U) << "the count must see the configuration itself being made";
}

}  // namespace
}  // namespace quillmere
