#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "pictures/PictureWriter.h"

namespace zvgentl::tool {

/// Creates the folder and those above it that are missing. Throws std::runtime_error with its name and the
/// reason.
void create_folder(const std::filesystem::path& folder);

/// Writes pictures to a folder on threads of its own, so that compressing and the disk do not hold up the
/// camera. Called from one thread.
class PictureSaver {
public:
    /// Creates the folder. Up to max_waiting bytes of pictures wait for the disk.
    PictureSaver(std::filesystem::path folder, FileFormat format, std::size_t max_waiting);
    /// Drops what still waits; finish() saves it.
    ~PictureSaver();
    PictureSaver(const PictureSaver&) = delete;
    PictureSaver& operator=(const PictureSaver&) = delete;

    /// Takes a picture over; waits while too many are waiting. Throws what an earlier write failed with.
    void save(std::uint64_t number, Picture picture);
    /// Returns when everything is written. Throws what a write failed with.
    void finish();
    /// Files written up to now.
    std::uint64_t saved() const;

    /// frame_000012.png for number 12.
    static std::string file_name(std::uint64_t number, const char* extension);

private:
    struct Job {
        std::uint64_t number;
        Picture picture;
    };

    void work();
    void write(const Job& job);
    void stop();

    std::filesystem::path m_folder;
    std::unique_ptr<PictureWriter> m_writer;
    std::size_t m_max_waiting;

    mutable std::mutex m_mutex; // guards what follows
    std::condition_variable m_work_to_do;
    std::condition_variable m_work_done;
    std::deque<Job> m_jobs;
    std::size_t m_waiting{0}; // bytes of pictures that are not yet written
    std::uint64_t m_saved{0};
    std::exception_ptr m_failure;
    bool m_stopping{false};

    std::vector<std::thread> m_threads;
};

} // namespace zvgentl::tool
