#include "unit/simulator/BlockingMemory.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#include <sys/mman.h>
#endif

namespace zvsim_test {

namespace {

std::atomic<BlockingMemory*> current{nullptr};

bool is_held_up(const void* address)
{
    BlockingMemory* const memory = current;
    return memory != nullptr && memory->hold_up(address);
}

#ifdef _WIN32
void* handler = nullptr;

LONG CALLBACK on_fault(EXCEPTION_POINTERS* fault)
{
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    const bool is_expected = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION &&
                             record.NumberParameters >= 2 &&
                             is_held_up(reinterpret_cast<const void*>(record.ExceptionInformation[1]));
    return is_expected ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH; // the access comes again
}

unsigned char* reserve(size_t size)
{
    handler = AddVectoredExceptionHandler(1, on_fault);
    return static_cast<unsigned char*>(VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
}
void allow_access(unsigned char* memory, size_t size)
{
    DWORD previous = 0;
    VirtualProtect(memory, size, PAGE_READWRITE, &previous);
}
void release(unsigned char* memory, size_t /*size*/)
{
    RemoveVectoredExceptionHandler(handler);
    VirtualFree(memory, 0, MEM_RELEASE);
}
#else
struct sigaction previous;

void on_fault(int /*signal*/, siginfo_t* info, void* /*context*/)
{
    if (!is_held_up(info->si_addr))
        signal(SIGSEGV, SIG_DFL); // a fault that no test made: the access comes again and ends the process
}

unsigned char* reserve(size_t size)
{
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = &on_fault;
    sigaction(SIGSEGV, &action, &previous);
    void* const mapped = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return mapped != MAP_FAILED ? static_cast<unsigned char*>(mapped) : nullptr;
}
void allow_access(unsigned char* memory, size_t size) { mprotect(memory, size, PROT_READ | PROT_WRITE); }
void release(unsigned char* memory, size_t size)
{
    sigaction(SIGSEGV, &previous, nullptr);
    munmap(memory, size);
}
#endif

} // namespace

BlockingMemory::BlockingMemory(size_t size) : m_size{size}, m_data{reserve(size)}
{
    if (m_data == nullptr)
        throw std::runtime_error{"no memory"};
    current = this;
}

BlockingMemory::~BlockingMemory()
{
    current = nullptr;
    release(m_data, m_size);
}

void BlockingMemory::let_go()
{
    allow_access(m_data, m_size);
    m_is_released = true;
}

bool BlockingMemory::hold_up(const void* address)
{
    if (address < m_data || address >= m_data + m_size)
        return false;
    m_is_accessed = true;
    while (!m_is_released)
        std::this_thread::yield();
    return true;
}

} // namespace zvsim_test
