#include "unit/simulator/BlockingMemory.h"

#include <atomic>
#include <stdexcept>

#include <windows.h>

namespace zvsim_test {

namespace {

std::atomic<BlockingMemory*> current{nullptr};
std::atomic<HANDLE> accessed{nullptr};
std::atomic<HANDLE> released{nullptr};

LONG CALLBACK on_fault(EXCEPTION_POINTERS* fault)
{
    BlockingMemory* const memory = current;
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (memory == nullptr || record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION ||
        record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    const auto* const address = reinterpret_cast<const unsigned char*>(record.ExceptionInformation[1]);
    if (address < memory->data() || address >= memory->data() + memory->size())
        return EXCEPTION_CONTINUE_SEARCH;
    SetEvent(accessed);
    WaitForSingleObject(released, INFINITE);
    return EXCEPTION_CONTINUE_EXECUTION; // the access comes again
}

} // namespace

struct BlockingMemory::Body {
    HANDLE accessed{CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    HANDLE released{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    void* handler{AddVectoredExceptionHandler(1, on_fault)};
};

BlockingMemory::BlockingMemory(size_t size)
    : m_size{size}, m_data{static_cast<unsigned char*>(
                        VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS))},
      m_body{new Body}
{
    if (m_data == nullptr)
        throw std::runtime_error{"no memory"};
    accessed = m_body->accessed;
    released = m_body->released;
    current = this;
}

BlockingMemory::~BlockingMemory()
{
    RemoveVectoredExceptionHandler(m_body->handler);
    current = nullptr;
    VirtualFree(m_data, 0, MEM_RELEASE);
    CloseHandle(m_body->accessed);
    CloseHandle(m_body->released);
}

bool BlockingMemory::wait_for_access()
{
    const auto limit = static_cast<DWORD>(patience.count() * 1000);
    return WaitForSingleObject(m_body->accessed, limit) == WAIT_OBJECT_0;
}

void BlockingMemory::let_go()
{
    DWORD previous = 0;
    VirtualProtect(m_data, m_size, PAGE_READWRITE, &previous);
    SetEvent(m_body->released);
}

} // namespace zvsim_test
