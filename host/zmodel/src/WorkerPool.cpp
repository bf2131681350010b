// SPDX-License-Identifier: MIT
// A small pool: one job at a time, cut into pieces that the threads take one after the other.
#include "WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class WorkerPool
{
public:
    WorkerPool()
    {
        const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
        for (unsigned i = 1; i < cores; ++i)
            m_threads.emplace_back([this] { Serve(); });
    }
    ~WorkerPool()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
        }
        m_wake.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void Run(int count, int grain, const std::function<void(int, int)>& work)
    {
        // A few pieces a core even out cores that are busy with something else.
        const int wanted = static_cast<int>(m_threads.size() + 1) * 4;
        const int grains = (count + grain - 1) / grain;
        const int size = std::max(1, (grains + wanted - 1) / wanted) * grain;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_work = &work;
            m_count = count;
            m_pieceSize = size;
            m_next = 0;
            m_serving = static_cast<int>(m_threads.size());
            ++m_job;
        }
        m_wake.notify_all();
        TakePieces();
        std::unique_lock<std::mutex> lock(m_mutex);
        m_done.wait(lock, [this] { return m_serving == 0; });
        m_work = nullptr;
    }

private:
    void TakePieces()
    {
        const int pieces = (m_count + m_pieceSize - 1) / m_pieceSize;
        for (int piece = m_next++; piece < pieces; piece = m_next++) {
            const int begin = piece * m_pieceSize;
            (*m_work)(begin, std::min(m_count - begin, m_pieceSize) + begin);
        }
    }
    void Serve()
    {
        long lastJob = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_wake.wait(lock, [&] { return m_ending || m_job != lastJob; });
            if (m_ending)
                return;
            lastJob = m_job;
            lock.unlock();
            TakePieces();
            lock.lock();
            if (--m_serving == 0)
                m_done.notify_one();
        }
    }

    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    const std::function<void(int, int)>* m_work = nullptr;
    std::atomic<int> m_next{0};
    int m_count = 0;
    int m_pieceSize = 1;
    int m_serving = 0;
    long m_job = 0;
    bool m_ending = false;
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
    static WorkerPool s_pool;
    s_pool.Run(count, grain, work);
}
