// SPDX-License-Identifier: MIT
// What opening and saving a large character costs, the scene included, beside moving the same bytes plainly.
//
//     files_benchmarks [FILE.glb]
//
// Times are wall time, the median of several, with the file in the system's cache. Peak memory is that of processes
// that do nothing else.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZScene.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kRepeats = 5;
constexpr double kOpenBound = 15;
constexpr double kSaveBound = 6;
constexpr double kMemoryBound = 6;

double Seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double MedianOf(std::vector<double> seconds)
{
    std::ranges::sort(seconds);
    return seconds[seconds.size() / 2];
}

double Median(const std::function<void()>& work)
{
    std::vector<double> seconds;
    for (int i = 0; i < kRepeats; ++i)
        seconds.push_back(Seconds(work));
    return MedianOf(seconds);
}

[[noreturn]] void Fail(const char* what)
{
    std::perror(what);
    std::exit(2);
}

/// Memory that nobody clears first.
struct Bytes
{
    std::unique_ptr<std::uint8_t[]> data;
    size_t size = 0;
};

Bytes ReadPlainly(const std::string& path)
{
    Bytes bytes;
    bytes.size = fs::file_size(path);
    bytes.data = std::make_unique_for_overwrite<std::uint8_t[]>(bytes.size);
    const int file = ::open(path.c_str(), O_RDONLY);
    for (size_t at = 0; at < bytes.size;) {
        const ssize_t n = ::read(file, bytes.data.get() + at, bytes.size - at);
        if (n <= 0)
            Fail(path.c_str());
        at += static_cast<size_t>(n);
    }
    ::close(file);
    return bytes;
}

void WriteAndSyncPlainly(const std::string& path, const Bytes& bytes)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (size_t at = 0; at < bytes.size;) {
        const ssize_t n = ::write(file, bytes.data.get() + at, bytes.size - at);
        if (n <= 0)
            Fail(path.c_str());
        at += static_cast<size_t>(n);
    }
    if (::fsync(file) != 0)
        Fail(path.c_str());
    ::close(file);
}

/// Swaps every weight of the first link that has some with a half of it: each of its vertices is edited.
void EditEveryVertex(ZModel& model)
{
    ZSkin& skin = *model.GetSkin();
    for (int link = 0; link < skin.LinkCount(); ++link) {
        ZArrayTemplate<int> vertices = skin.GetEntryVertices(link);
        ZArrayTemplate<double> weights = skin.GetEntryWeights(link);
        for (int i = 0; i < weights.GetCount(); ++i)
            weights[i] *= link % 2 == 0 ? 0.5 : 0.75;
        skin.SetEntries(link, std::move(vertices), std::move(weights));
    }
}

void EditOneVertex(ZModel& model)
{
    ZSkin& skin = *model.GetSkin();
    skin.BeginLink(0);
    skin.SetEntryWeight(0.125, 0);
    skin.EndLink();
}

/// Opens, edits what is asked for, saves over a copy; nothing is timed.
int OpenAndSave(const std::string& path, const std::string& out, bool editAll)
{
    ZSession session({});
    ZDocuments documents(session);
    ZModel* const model = documents.Open(path).front();
    if (editAll)
        EditEveryVertex(*model);
    if (!out.empty())
        documents.Save(out);
    return 0;
}

/// Peak memory in bytes of this program run anew with these arguments.
double PeakOf(const char* self, const std::vector<std::string>& arguments)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::vector<char*> words{const_cast<char*>(self)};
        for (const std::string& argument : arguments)
            words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        ::execv("/proc/self/exe", words.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    if (::wait4(child, &status, 0, &usage) != child || status != 0)
        Fail("a measured process");
    return static_cast<double>(usage.ru_maxrss) * 1024;
}

void Print(const char* what, double value, const char* unit, double ratio, double bound)
{
    std::printf("%-44s %9.1f %-3s %6.2f   bound %4.0f%s\n", what, value, unit, ratio, bound,
                ratio > bound ? "   OVER" : "");
}

int Measure(const char* self, const std::string& path)
{
    const std::string out = path + ".saved.glb";
    // First of all: what this process had in memory would count as its child's.
    const double opened = PeakOf(self, {"--run", path, "", "0"});
    const double saved = PeakOf(self, {"--run", path, out, "1"});
    const Bytes bytes = ReadPlainly(path);
    const auto size = static_cast<double>(bytes.size);
    const double read = Median([&] { static_cast<void>(ReadPlainly(path)); });
    const double write = Median([&] { WriteAndSyncPlainly(out, bytes); });
    std::printf("%.1f MB; plainly read in %.1f ms, written and synced in %.1f ms\n", size / 1e6, 1e3 * read,
                1e3 * write);

    std::vector<double> opening;
    for (int i = 0; i < kRepeats; ++i) {
        ZSession session({});
        ZDocuments documents(session);
        opening.push_back(Seconds([&] { documents.Open(path); }));
    }
    Print("open (times reading)", 1e3 * MedianOf(opening), "ms", MedianOf(opening) / read, kOpenBound);

    ZSession session({});
    ZDocuments documents(session);
    ZModel* const model = documents.Open(path).front();
    const auto save = [&](const char* what) {
        const double seconds = Median([&] { documents.Save(out); });
        Print(what, 1e3 * seconds, "ms", seconds / (read + write), kSaveBound);
    };
    save("save untouched (times reading and writing)");
    EditOneVertex(*model);
    save("save, one vertex edited");
    EditEveryVertex(*model);
    save("save, every vertex edited");

    Print("peak memory of opening (times the file)", opened / 1e6, "MB", opened / size, kMemoryBound);
    Print("peak memory of opening, editing, saving", saved / 1e6, "MB", saved / size, kMemoryBound);
    fs::remove(out);
    return 0;
}

} // namespace

int main(int count, char** words)
{
    const std::vector<std::string> arguments(words + 1, words + count);
    if (arguments.size() == 4 && arguments[0] == "--run")
        return OpenAndSave(arguments[1], arguments[2], arguments[3] == "1");
    return Measure(words[0], arguments.empty() ? SKINDESK_LARGE_CHARACTER : arguments[0]);
}
