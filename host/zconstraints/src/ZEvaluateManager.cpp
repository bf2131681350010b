// SPDX-License-Identifier: MIT
// The evaluation manager and its thread.
//
// Who holds what: between the moment a pass is handed to the thread (busy) and the moment the thread is done, the
// thread owns the jobs and the connected objects of their constraints; otherwise the user-interface thread does. The
// mutex hands them over. Everything else of the state belongs to the user-interface thread alone.
#include "zconstraints/ZEvaluateManager.h"

#include "Connections.h"
#include "zbaselib/ZReport.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace {
struct Job
{
    ZConstraint* constraint = nullptr; ///< null when the constraint went before the pass was finished
    bool handled = false;
    std::exception_ptr failure;
};

void RunJob(Job& job, const ZEvaluateInfo& info)
{
    try {
        job.handled = job.constraint->ConstraintEvaluate(info);
    } catch (...) {
        job.failure = std::current_exception();
    }
}

/// Says why an evaluation failed. A misuse stays one.
void Report(const std::string& name, const std::exception_ptr& failure)
{
    const std::string line = "constraint \"" + name + "\" failed and is switched off: ";
    try {
        std::rethrow_exception(failure);
    } catch (const ZHostMisuse& misuse) {
        ZReport_Misuse("ZConstraint::ConstraintEvaluate", line + misuse.what());
    } catch (const std::exception& exception) {
        ZReport_Warning(line + exception.what());
    } catch (...) {
        ZReport_Warning(line + "no reason given");
    }
}
} // namespace

struct ZEvaluateManager::State
{
    std::mutex mutex;
    std::condition_variable workCame;
    std::condition_variable workDone;
    bool busy = false;
    bool stop = false;
    std::vector<Job> jobs;
    ZEvaluateInfo info;

    std::thread thread;
    bool started = false; ///< a pass waits to be finished
    int pauses = 0;
    int lastPassId = 0;
    long changeCount = 0;
    std::vector<ZConstraint*> constraints;

    void Work()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            workCame.wait(lock, [this] { return busy || stop; });
            if (stop)
                return;
            lock.unlock();
            for (Job& job : jobs)
                RunJob(job, info);
            lock.lock();
            busy = false;
            workDone.notify_all();
        }
    }
    void HandOver()
    {
        if (jobs.empty())
            return;
        // The first pass brings the thread: a session without constraints needs none.
        if (!thread.joinable())
            thread = std::thread([this] { Work(); });
        const std::lock_guard lock(mutex);
        busy = true;
        workCame.notify_one();
    }
    void WaitForThread()
    {
        std::unique_lock lock(mutex);
        workDone.wait(lock, [this] { return !busy; });
    }
};

ZEvaluateManager* ZEvaluateManager::TheOne()
{
    // Destroyed at the end of the process, after every constraint, since a constraint's constructor asks for it first:
    // the thread is joined then.
    static ZEvaluateManager manager;
    return &manager;
}

ZEvaluateManager::ZEvaluateManager() : m_state(std::make_unique<State>()) {}

ZEvaluateManager::~ZEvaluateManager()
{
    if (!m_state->thread.joinable())
        return;
    m_state->WaitForThread();
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->stop = true;
        m_state->workCame.notify_one();
    }
    m_state->thread.join();
}

bool ZEvaluateManager::IsEvaluationThread() const { return m_state->thread.get_id() == std::this_thread::get_id(); }

void ZEvaluateManager::DevicePause()
{
    if (IsEvaluationThread())
        return;
    ++m_state->pauses;
    m_state->WaitForThread();
}

void ZEvaluateManager::DeviceRelease()
{
    if (IsEvaluationThread())
        return;
    if (m_state->pauses == 0)
        return ZReport_Misuse("ZEvaluateManager::DeviceRelease", "evaluation is not paused");
    --m_state->pauses;
}

bool ZEvaluateManager::IsPaused() const { return m_state->pauses > 0; }

bool ZEvaluateManager::Evaluate(double time)
{
    Finish(); // a pass that was started is finished first, so that the new one builds on its result
    return Start(time) && Finish();
}

bool ZEvaluateManager::Start(double time)
{
    if (IsPaused() || m_state->started)
        return false;
    m_state->info = {++m_state->lastPassId, time};
    m_state->jobs.clear();
    for (ZConstraint* constraint : m_state->constraints) {
        if (!constraint->m_enabled && !constraint->m_marked)
            continue;
        constraint->m_marked = false;
        constraint->m_connections->Prepare();
        Job job;
        job.constraint = constraint;
        m_state->jobs.push_back(job);
    }
    m_state->started = true;
    m_state->HandOver();
    return true;
}

bool ZEvaluateManager::Finish()
{
    if (!m_state->started)
        return false;
    m_state->WaitForThread();
    m_state->started = false;
    bool changed = false;
    for (const Job& job : m_state->jobs) {
        if (job.constraint == nullptr)
            continue;
        ZConstraint::Connections& connections = *job.constraint->m_connections;
        changed = connections.GiveBack() || changed;
        if (job.handled)
            changed = connections.Apply() || changed;
    }
    if (changed)
        MarkChanged();
    // Guests are called below and may destroy constraints, which then take themselves out of `jobs`.
    for (size_t i = 0; i < m_state->jobs.size(); ++i) {
        ZConstraint* const constraint = m_state->jobs[i].constraint;
        const std::exception_ptr failure = m_state->jobs[i].failure;
        if (constraint == nullptr || !failure)
            continue;
        constraint->ConstraintSetEnabled(false);
        Report(constraint->GetObjectName(), failure);
    }
    return true;
}

bool ZEvaluateManager::HasWork() const
{
    return std::any_of(m_state->constraints.begin(), m_state->constraints.end(),
                       [](const ZConstraint* constraint) { return constraint->m_enabled || constraint->m_marked; });
}

int ZEvaluateManager::GetLastPassId() const { return m_state->lastPassId; }
long ZEvaluateManager::GetChangeCount() const { return m_state->changeCount; }
const std::vector<ZConstraint*>& ZEvaluateManager::GetConstraints() const { return m_state->constraints; }

void ZEvaluateManager::AddConstraint(ZConstraint* constraint) { m_state->constraints.push_back(constraint); }

void ZEvaluateManager::RemoveConstraint(ZConstraint* constraint)
{
    m_state->WaitForThread();
    std::erase(m_state->constraints, constraint);
    for (Job& job : m_state->jobs)
        if (job.constraint == constraint)
            job.constraint = nullptr;
}

void ZEvaluateManager::MarkChanged() { ++m_state->changeCount; }
