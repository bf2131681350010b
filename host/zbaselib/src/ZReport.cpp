// SPDX-License-Identifier: MIT
// The host's report: warnings, the status line and misuse.
#include "zbaselib/ZReport.h"

#include <utility>

namespace {
enum ReportKind
{
    kReportWarning = 0,
    kReportStatus = 1,
    kReportMisuse = 2
};

struct Report
{
    bool misuseFatal = false;
    std::vector<std::string> warnings;
    std::string status;
    std::function<void(int, const std::string&)> listener;
};

// Never destroyed: objects that die at the end of the process may still have something to say.
Report& TheReport()
{
    static Report& report = *new Report;
    return report;
}

void Tell(ReportKind kind, const std::string& line)
{
    // A copy: the listener may replace itself.
    const auto listener = TheReport().listener;
    if (listener)
        listener(kind, line);
}
} // namespace

void ZReport_Misuse(const char* call, const std::string& sentence)
{
    const std::string line = std::string(call) + ": " + sentence;
    if (TheReport().misuseFatal)
        throw ZHostMisuse(line);
    TheReport().warnings.push_back(line);
    Tell(kReportMisuse, line);
}

void ZReport_SetMisuseFatal(bool fatal) { TheReport().misuseFatal = fatal; }
bool ZReport_IsMisuseFatal() { return TheReport().misuseFatal; }

void ZReport_Warning(const std::string& line)
{
    TheReport().warnings.push_back(line);
    Tell(kReportWarning, line);
}

const std::vector<std::string>& ZReport_Warnings() { return TheReport().warnings; }
void ZReport_ClearWarnings() { TheReport().warnings.clear(); }

void ZReport_Status(const std::string& line)
{
    TheReport().status = line;
    Tell(kReportStatus, line);
}

const std::string& ZReport_GetStatus() { return TheReport().status; }

void ZReport_SetListener(std::function<void(int kind, const std::string& line)> listener)
{
    TheReport().listener = std::move(listener);
}
