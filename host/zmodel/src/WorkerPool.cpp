// SPDX-License-Identifier: MIT
// A small pool: one job at a time, cut into pieces that the threads take one after the other.
#include "WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include <unistd.h>

namespace {

class WorkerPool
{
public:
    WorkerPool()
    {
        const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
        try {
            for (unsigned i = 1; i < cores; ++i) {
                std::thread([this] { Serve(); }).detach();
                ++m_threadCount;
            }
        } catch (const std::system_error&) {
            // No more threads can be had: the work is done by those that there are.
        }
    }
    /// A forked child has the pool's memory and none of its threads.
    bool IsOurs() const { return m_process == getpid(); }
    ~WorkerPool() = delete;
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void Run(int count, int grain, const std::function<void(int, int)>& work)
    {
        // A few pieces a core even out cores that are busy with something else.
        const int wanted = (m_threadCount + 1) * 4;
        const int grains = (count + grain - 1) / grain;
        const int size = std::max(1, (grains + wanted - 1) / wanted) * grain;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_work = &work;
            m_count = count;
            m_pieceSize = size;
            m_next = 0;
        }
        m_wake.notify_all();
        TakePieces(work);
        // All pieces are taken. Threads that wake only now find no work; those that took some are waited for.
        std::unique_lock<std::mutex> lock(m_mutex);
        m_work = nullptr;
        m_done.wait(lock, [this] { return m_busy == 0; });
    }

private:
    void TakePieces(const std::function<void(int, int)>& work)
    {
        const int pieces = (m_count + m_pieceSize - 1) / m_pieceSize;
        for (int piece = m_next++; piece < pieces; piece = m_next++) {
            const int begin = piece * m_pieceSize;
            work(begin, std::min(m_count - begin, m_pieceSize) + begin);
        }
    }
    bool HasPieces() const { return static_cast<long>(m_next) * m_pieceSize < m_count; }
    void Serve()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_wake.wait(lock, [this] { return m_work != nullptr && HasPieces(); });
            const std::function<void(int, int)>& work = *m_work;
            ++m_busy;
            lock.unlock();
            TakePieces(work);
            lock.lock();
            if (--m_busy == 0)
                m_done.notify_one();
        }
    }

    const pid_t m_process = getpid();
    int m_threadCount = 0;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    // Set under the mutex while no thread is busy.
    const std::function<void(int, int)>* m_work = nullptr;
    int m_count = 0;
    int m_pieceSize = 1;
    std::atomic<int> m_next{0}; ///< piece
    int m_busy = 0;
};

std::mutex s_oneJob;

} // namespace

void ParallelFor(int count, int grain, const std::function<void(int begin, int end)>& work)
{
    if (count <= 0)
        return;
    std::unique_lock<std::mutex> only(s_oneJob, std::defer_lock);
    if (count / 2 < grain || !only.try_lock()) {
        work(0, count);
        return;
    }
    // Never destroyed: its threads wait until the process ends, and nobody has to wait for them then.
    static WorkerPool& s_pool = *new WorkerPool;
    if (s_pool.IsOurs())
        s_pool.Run(count, grain, work);
    else
        work(0, count);
}
