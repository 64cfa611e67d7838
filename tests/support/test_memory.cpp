#include <tests/support/test_memory.h>

#include <kelmara/foundation/memory.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

// Each block has its size in front of it; 16 bytes keep the alignment.
constexpr std::size_t Header = 16;

std::atomic<long> live_blocks{0}, live_bytes{0}, requests{0}, last_request{0};
std::atomic<long> requests_until_failure{0}, refused{0}; // 0: no failure is ordered
std::atomic<bool> fails_for_ever{false};

bool Is_Refused(long size) {
    ++requests;
    last_request = size;
    if (size < 0) return true;
    if (requests_until_failure == 0) return false;
    if (--requests_until_failure > 0) return false;
    requests_until_failure = fails_for_ever ? 1 : 0;
    ++refused;
    return true;
}

void *Front(void *block) {
    return static_cast<char *>(block) - Header;
}
long &Size_Of(void *block) {
    return *static_cast<long *>(Front(block));
}

void *Make(long size, bool clear) {
    if (Is_Refused(size)) return nullptr;
    void *memory = std::malloc(static_cast<std::size_t>(size) + Header);
    if (!memory) return nullptr;
    void *block = static_cast<char *>(memory) + Header;
    Size_Of(block) = size;
    std::memset(block, clear ? 0 : 0xA5, static_cast<std::size_t>(size));
    ++live_blocks;
    live_bytes += size;
    return block;
}

void *Allocate(long size) {
    return Make(size, false);
}
void *Allocate_Clear(long size) {
    return Make(size, true);
}

void Free(void *block) {
    if (!block) return;
    --live_blocks;
    live_bytes -= Size_Of(block);
    std::free(Front(block));
}

void *Reallocate(void *block, long size) {
    if (!block) return Allocate(size);
    void *fresh = Make(size, false);
    if (!fresh) return nullptr;
    std::memcpy(fresh, block, static_cast<std::size_t>(size < Size_Of(block) ? size : Size_Of(block)));
    Free(block);
    return fresh;
}

} // namespace

void Install_Test_Memory() {
    Set_Local_Memory_Procs(Allocate, Allocate_Clear, Reallocate, Free);
}

long Live_Blocks() {
    return live_blocks;
}
long Live_Bytes() {
    return live_bytes;
}
long Requests() {
    return requests;
}
long Last_Request() {
    return last_request;
}

FailingMemory::FailingMemory(long nth, bool for_ever) {
    refused = 0;
    fails_for_ever = for_ever;
    requests_until_failure = nth;
}

FailingMemory::~FailingMemory() {
    requests_until_failure = 0;
}

long FailingMemory::Refused() const {
    return refused;
}

NoLeak::NoLeak() : blocks_(live_blocks) {}

NoLeak::~NoLeak() {
    EXPECT_EQ(live_blocks, blocks_) << "blocks leaked or released twice";
}
