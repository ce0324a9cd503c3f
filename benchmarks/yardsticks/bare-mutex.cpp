// Takes and gives back a mutex; prints nanoseconds of one pair.
//
//   bare-mutex COUNT

#include "Measure.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace
{

// Sleeps until told to end. The C library leaves out the locking proper while a process has one
// thread; a process with a logger has two.
class Bystander
{
public:
    ~Bystander()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isOver = true;
        }
        m_told.notify_one();
        m_thread.join();
    }

private:
    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_told.wait(lock, [this] { return m_isOver; });
    }

    std::mutex m_mutex;
    std::condition_variable m_told;
    bool m_isOver{false};
    std::thread m_thread{&Bystander::wait, this};
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("bare-mutex COUNT");
    }
    const long count = bench::repetitions(argv[1]);
    const Bystander bystander;
    std::mutex mutex;
    const double begin = bench::processorSeconds();
    for (long pair = 0; pair < count; ++pair)
    {
        const std::lock_guard<std::mutex> lock(mutex);
    }
    std::printf("%.3f\n", (bench::processorSeconds() - begin) / static_cast<double>(count) * 1e9);
    return EXIT_SUCCESS;
}
