#include "unit/simulator/BlockingMemory.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <stdexcept>

#include <semaphore.h>
#include <signal.h>
#include <sys/mman.h>

namespace zvsim_test {

namespace {

std::atomic<BlockingMemory*> current{nullptr};
std::atomic<sem_t*> accessed{nullptr};
std::atomic<sem_t*> released{nullptr};

void on_fault(int /*signal*/, siginfo_t* info, void* /*context*/)
{
    BlockingMemory* const memory = current;
    const auto* const address = static_cast<unsigned char*>(info->si_addr);
    if (memory == nullptr || address < memory->data() || address >= memory->data() + memory->size()) {
        signal(SIGSEGV, SIG_DFL); // a fault that no test made: the access comes again and ends the process
        return;
    }
    sem_post(accessed);
    while (sem_wait(released) != 0) {
    }
}

} // namespace

struct BlockingMemory::Body {
    sem_t accessed;
    sem_t released;
    struct sigaction previous;
};

BlockingMemory::BlockingMemory(size_t size) : m_size{size}, m_data{nullptr}, m_body{new Body}
{
    void* const mapped = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::runtime_error{"no memory"};
    m_data = static_cast<unsigned char*>(mapped);
    sem_init(&m_body->accessed, 0, 0);
    sem_init(&m_body->released, 0, 0);
    accessed = &m_body->accessed;
    released = &m_body->released;
    current = this;
    struct sigaction action = {};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = &on_fault;
    sigaction(SIGSEGV, &action, &m_body->previous);
}

BlockingMemory::~BlockingMemory()
{
    sigaction(SIGSEGV, &m_body->previous, nullptr);
    current = nullptr;
    munmap(m_data, m_size);
    sem_destroy(&m_body->accessed);
    sem_destroy(&m_body->released);
}

bool BlockingMemory::wait_for_access()
{
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += patience.count();
    int waited = 0;
    do {
        waited = sem_timedwait(&m_body->accessed, &until);
    } while (waited != 0 && errno == EINTR);
    return waited == 0;
}

void BlockingMemory::let_go()
{
    mprotect(m_data, m_size, PROT_READ | PROT_WRITE);
    sem_post(&m_body->released);
}

} // namespace zvsim_test
