#include "frontend/CMontaray/Job.h"

#include "frontend/CMontaray/Message.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/entry_point.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {
/// Holds what is said until it can be told to the process that prints it.
class HeldConsole : public TextOStream {
public:
    std::string take() { return std::exchange(text, {}); }

protected:
    void write_text(const char* more, std::size_t n) override { text.append(more, n); }

private:
    std::string text;
};

/// Tells the process at the other end of the pipe, which prints what was said.
class PipeListener : public RunListener {
public:
    explicit PipeListener(int pipe) : pipe(pipe) { coutp = &output; }
    PipeListener(const PipeListener&) = delete;
    PipeListener& operator=(const PipeListener&) = delete;

    void begun(const std::vector<int>&) override {}

    void frame_ended(const FrameEvent& event) override
    {
        FrameEvent whole = event;
        whole.said = output.take();
        Message message;
        put_event(message, whole);
        message.send(pipe);
    }

private:
    int pipe;
    HeldConsole output;
};

[[noreturn]] void be_job(int pipe, pid_t parent, int number, const std::vector<int>& first_places,
                         const JobWork& work)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent)
        ::_exit(EXIT_FAILURE);
    PipeListener listener(pipe);
    const bool is_done = without_exceptions<bool>(false, [&] {
        work(number, first_places, listener);
        return true;
    });
    ::_exit(is_done ? EXIT_SUCCESS : EXIT_FAILURE); // what is further up is the first process's
}
} // namespace

Job Job::start(int number, const std::vector<int>& first_places, const JobWork& work)
{
    Job job;
    job.number = number;
    job.first_places = first_places;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return job;
    job.pipe = FileHandle(ends[0]);
    const FileHandle their_end(ends[1]);
    coutp->flush();
    const pid_t parent = ::getpid();
    job.pid = ::fork();
    if (job.pid == 0) {
        job.pipe.close(); // or it would never learn that nobody reads
        be_job(ends[1], parent, number, first_places, work);
    }
    return job;
}

bool Job::read()
{
    constexpr std::size_t ROOM = 65536;
    char room[ROOM];
    const ssize_t n = ::read(pipe.inq_descriptor(), room, sizeof room);
    if (n > 0)
        bytes.append(room, static_cast<std::size_t>(n));
    return n > 0 || (n < 0 && errno == EINTR);
}
