#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "system/faults/Life.h"
#include "system/faults/matrix.h"
#include "system/fixture.h"

// What the built producer answers to every kind of fault of its grabbers.

using namespace GenTL;
using namespace zvsystem;

namespace {

const char* const grabbers = R"(demo_grabber: false
grabbers:
- name: First
  cameras:
  - &camera {model: Small, serial: A-1, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}
  - {model: Small, serial: A-2, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}
- name: Second
  protocol: CameraLinkHS
  cameras: [*camera]
- name: Hidden
)";

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += "    " + line + "\n";
    return text;
}

class FaultMatrix : public testing::TestWithParam<FaultRow> {
protected:
    FaultMatrix() { surroundings().set_mode(GetParam().mode); }
    ~FaultMatrix() override { unsetenv("ZV_GRABBER_CONFIG"); }

    /// A consumer's life with these faults.
    std::vector<std::string> life_with(const std::string& faults, Life::Frames frames = Life::Frames::come)
    {
        static int lives = 0; // each counts its calls anew, though its text be the same
        const auto file = surroundings().folder() / "grabbers.yaml";
        std::ofstream{file} << "# " << ++lives << "\n" << grabbers << faults;
        setenv("ZV_GRABBER_CONFIG", file.string().c_str(), 1);
        return Life{m_producer.functions(), GetParam().mode, frames}.live();
    }

    std::filesystem::path log_file() const { return surroundings().folder() / "calls.log"; }
    bool has_happened(const std::string& kind) const
    {
        std::stringstream log;
        log << std::ifstream{log_file()}.rdbuf();
        return log.str().find("fault " + kind) != std::string::npos;
    }

private:
    Surroundings& m_surroundings{surroundings()}; // before the producer looks for its settings
    Producer m_producer{producer_file};
};

/// The lines of a life that a healthy one has not.
std::vector<std::string> differences(const std::vector<std::string>& life,
                                     const std::vector<std::string>& healthy)
{
    std::vector<std::string> different;
    for (const std::string& line : life) {
        if (std::find(healthy.begin(), healthy.end(), line) == healthy.end())
            different.push_back(line);
    }
    return different;
}

TEST_P(FaultMatrix, TheProducerAnswersSurvivesAndWorksAgain)
{
    const FaultRow& row = GetParam();
    const auto healthy = life_with("faults: []");
    const std::string fault = row.fault;
    const auto faulty =
        life_with("call_log: " + log_file().string() + "\nfaults: [{kind: " + fault + "}]", row.frames);
    EXPECT_EQ(joined(row.answers), joined(differences(faulty, healthy)));
    EXPECT_EQ(joined(healthy), joined(life_with("faults: []")));
    EXPECT_TRUE(has_happened(fault.substr(0, fault.find(','))));
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultMatrix, testing::ValuesIn(fault_rows()), name_of_row);

} // namespace
