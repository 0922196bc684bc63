#include "zvgentl/PictureSaver.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fmt/core.h>

namespace zvgentl::tool {

namespace {

unsigned thread_count() noexcept { return std::clamp(std::thread::hardware_concurrency(), 1U, 4U); }

} // namespace

void create_folder(const std::filesystem::path& folder)
{
    std::error_code error;
    const auto root = std::filesystem::absolute(folder, error).root_path();
    if (!std::filesystem::exists(root, error)) // a drive; the library below has a wrong reason for it
        throw std::runtime_error(
            fmt::format("cannot create the folder {}: there is no {}", folder.u8string(), root.u8string()));
    std::filesystem::create_directories(folder, error);
    std::error_code ignored; // the first reason counts
    if (!std::filesystem::is_directory(folder, ignored))
        throw std::runtime_error(fmt::format("cannot create the folder {}: {}", folder.u8string(),
                                             error ? error.message() : "a file has that name"));
}

PictureSaver::PictureSaver(std::filesystem::path folder, FileFormat format, std::size_t max_waiting)
    : m_folder(std::move(folder)), m_writer(make_writer(format)), m_max_waiting(max_waiting)
{
    create_folder(m_folder);
    remove_unfinished_pictures(m_folder);
    for (unsigned i = 0; i < thread_count(); ++i)
        m_threads.emplace_back([this] { work(); });
}

PictureSaver::~PictureSaver() { stop(); }

void PictureSaver::save(std::uint64_t number, Picture picture)
{
    std::unique_lock lock(m_mutex);
    m_work_done.wait(lock, [this] { return m_waiting < m_max_waiting || m_failure; });
    if (m_failure)
        std::rethrow_exception(m_failure);
    m_waiting += picture.samples.size();
    m_jobs.push_back({number, std::move(picture)});
    m_work_to_do.notify_one();
}

void PictureSaver::finish()
{
    std::unique_lock lock(m_mutex);
    m_work_done.wait(lock, [this] { return m_waiting == 0 || m_failure; });
    if (m_failure)
        std::rethrow_exception(m_failure);
}

std::uint64_t PictureSaver::saved() const
{
    const std::lock_guard lock(m_mutex);
    return m_saved;
}

std::string PictureSaver::file_name(std::uint64_t number, const char* extension)
{
    return fmt::format("frame_{:06}{}", number, extension);
}

void PictureSaver::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work_to_do.wait(lock, [this] { return !m_jobs.empty() || m_stopping; });
        if (m_stopping)
            return;
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        std::exception_ptr failure;
        try {
            write(job);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_waiting -= job.picture.samples.size();
        if (!failure)
            ++m_saved;
        else if (!m_failure)
            m_failure = failure;
        m_work_done.notify_all();
    }
}

void PictureSaver::write(const Job& job)
{
    m_writer->write(m_folder / file_name(job.number, m_writer->extension()), job.picture);
}

void PictureSaver::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_work_to_do.notify_all();
    for (auto& thread : m_threads)
        thread.join();
}

} // namespace zvgentl::tool
