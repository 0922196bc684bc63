#include "zvgentl/FrameSink.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "gentl/texts.h"
#include "pictures/Picture.h"
#include "platform/terminal.h"
#include "zvgentl/Json.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t most_waiting_pictures = 256U << 20U; // bytes
constexpr const char* raw_ending = ".raw";

/// The number of a file that some run has saved a frame in; nothing for other files.
std::optional<std::uint64_t> frame_number(const fs::path& file)
{
    const std::string name = file.stem().u8string();
    const std::string ending = file.extension().u8string();
    const std::string start = "frame_";
    if (name.compare(0, start.size(), start) != 0 ||
        (ending != ".png" && ending != ".tiff" && ending != raw_ending))
        return std::nullopt;
    std::uint64_t number = 0;
    const char* const end = name.data() + name.size();
    const auto [stopped, error] = std::from_chars(name.data() + start.size(), end, number);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

std::vector<fs::path> frames_in(const fs::path& folder)
{
    std::vector<fs::path> files;
    std::error_code error; // a folder that does not exist has none
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (frame_number(entry->path()))
            files.push_back(entry->path());
    return files;
}

/// The first number that is free; throws when that is not what was asked for.
std::uint64_t first_number(const fs::path& folder, const GrabOptions& options)
{
    const auto files = frames_in(folder);
    if (files.empty() || options.overwrite)
        return 0;
    if (!options.append)
        throw std::runtime_error(
            fmt::format("the folder {} holds {} frames of an earlier run; --overwrite removes "
                        "them, --append keeps them and numbers on",
                        folder.u8string(), files.size()));
    std::uint64_t highest = 0;
    for (const auto& file : files)
        highest = std::max(highest, *frame_number(file));
    return highest + 1;
}

/// Whether raw frames go into one file: by its name, and a device or a pipe.
bool is_one_file(const fs::path& output)
{
    std::error_code error; // what cannot be looked at is taken by its name
    return lower_case(output.extension().u8string()) == raw_ending ||
           (fs::exists(output, error) && !fs::is_directory(output, error));
}

void check_file(const fs::path& file, const GrabOptions& options)
{
    if (options.append)
        throw std::runtime_error("--append needs a folder: " + file.u8string() + " is one file");
    std::error_code error; // what cannot be looked at cannot be written either, which tells why
    if (fs::is_regular_file(file, error) && !options.overwrite)
        throw std::runtime_error(file.u8string() + " exists; --overwrite replaces it");
}

PixelSource pixels_of(const Frame& frame)
{
    return {frame.data, frame.size, frame.width, frame.height, frame.row_padding, frame.pixel_format};
}

const char* state_name(FrameState state) noexcept
{
    switch (state) {
    case FrameState::intact:
        return "intact";
    case FrameState::damaged:
        return "damaged";
    default:
        return "not checked";
    }
}

} // namespace

FrameSink::FrameSink(const GrabOptions& options) : m_options(options)
{
    if (options.output.empty())
        return;
    const fs::path output = fs::u8path(options.output);
    const bool is_raw = options.format == SaveFormat::raw;
    if (options.saves_to_output()) {
        if (!is_raw)
            throw std::runtime_error("pictures cannot be written to standard output; use --format raw");
        platform::keep_bytes(stdout);
    } else if (is_raw && is_one_file(output)) {
        check_file(output, options);
        OutputFile::remove_leftovers(fs::absolute(output).parent_path());
        m_raw_file = std::make_unique<OutputFile>(output);
    } else {
        m_folder = output;
        m_first_number = first_number(m_folder, options);
        create_folder(m_folder);
        OutputFile::remove_leftovers(m_folder);
        if (!is_raw)
            m_pictures = std::make_unique<PictureSaver>(
                m_folder, options.format == SaveFormat::tiff ? FileFormat::tiff : FileFormat::png,
                most_waiting_pictures);
    }
}

void FrameSink::begin(std::uint64_t timestamp_frequency)
{
    m_timestamp_frequency = timestamp_frequency;
    if (m_options.overwrite && !m_folder.empty())
        for (const auto& file : frames_in(m_folder))
            fs::remove(file);
    if (!m_options.frames_csv.empty()) {
        m_table = std::make_unique<OutputFile>(fs::u8path(m_options.frames_csv));
        m_table->write("number,id,timestamp,arrival_s,size,state\n");
    }
    m_begin = Clock::now();
}

void FrameSink::take(const Frame& frame, FrameState state)
{
    add_line(frame, state);
    if (m_pictures)
        m_picture = make_picture(pixels_of(frame));
    else if (!m_options.output.empty())
        save_raw(frame);
    ++m_taken;
}

void FrameSink::pass_on()
{
    if (!m_picture)
        return;
    m_pictures->save(m_first_number + m_taken - 1, std::move(*m_picture));
    m_picture.reset();
}

void FrameSink::finish()
{
    if (m_pictures)
        m_pictures->finish();
    if (m_raw_file)
        m_raw_file->finish();
    if (m_table)
        m_table->finish();
}

std::uint64_t FrameSink::saved() const { return m_pictures ? m_pictures->saved() : m_saved_raw; }

void FrameSink::save_raw(const Frame& frame)
{
    const std::uint64_t number = m_first_number + m_taken;
    const std::string header = json_line({number, frame, m_timestamp_frequency});
    if (m_options.saves_to_output()) {
        print_bytes(header.data(), header.size());
        print_bytes(frame.data, frame.size);
    } else if (m_raw_file) {
        m_raw_file->write(header);
        m_raw_file->write(frame.data, frame.size);
    } else {
        OutputFile file(m_folder / PictureSaver::file_name(number, raw_ending));
        file.write(header);
        file.write(frame.data, frame.size);
        file.finish();
    }
    ++m_saved_raw;
}

void FrameSink::add_line(const Frame& frame, FrameState state)
{
    if (!m_table)
        return;
    const double arrival = std::chrono::duration<double>(Clock::now() - m_begin).count();
    m_table->write(fmt::format("{},{},{},{:.6f},{},{}\n", m_first_number + m_taken, frame.id, frame.timestamp,
                               arrival, frame.size, state_name(state)));
}

} // namespace zvgentl::tool
