#include "unit/simulator/BlockingMemory.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>

#include <sys/mman.h>

namespace zvsim_test {

namespace {

std::atomic<BlockingMemory*> current{nullptr};

} // namespace

BlockingMemory::BlockingMemory(size_t size) : m_size{size}, m_data{nullptr}
{
    void* const mapped = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error{"no memory"};
    m_data = static_cast<unsigned char*>(mapped);
    sem_init(&m_accessed, 0, 0);
    sem_init(&m_released, 0, 0);
    current = this;
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = &BlockingMemory::on_fault;
    sigaction(SIGSEGV, &action, &m_previous);
}

BlockingMemory::~BlockingMemory()
{
    sigaction(SIGSEGV, &m_previous, nullptr);
    current = nullptr;
    munmap(m_data, m_size);
    sem_destroy(&m_accessed);
    sem_destroy(&m_released);
}

bool BlockingMemory::wait_for_access()
{
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += patience.count();
    int waited = 0;
    do {
        waited = sem_timedwait(&m_accessed, &until);
    } while (waited != 0 && errno == EINTR);
    return waited == 0;
}

void BlockingMemory::let_go()
{
    mprotect(m_data, m_size, PROT_READ | PROT_WRITE);
    sem_post(&m_released);
}

void BlockingMemory::on_fault(int /*signal*/, siginfo_t* info, void* /*context*/)
{
    BlockingMemory* const memory = current;
    const auto* const address = static_cast<unsigned char*>(info->si_addr);
    if (memory == nullptr || address < memory->m_data || address >= memory->m_data + memory->m_size) {
        signal(SIGSEGV, SIG_DFL); // a fault that no test made: the access comes again and ends the process
        return;
    }
    sem_post(&memory->m_accessed);
    while (sem_wait(&memory->m_released) != 0) {
    }
}

} // namespace zvsim_test
