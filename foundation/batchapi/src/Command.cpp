#include "batchapi/hdr/Command.h"

#include "kivlib/hdr/FileHandle.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int FIRST_OF_OWN = 3; // descriptors behind input, output and errors
constexpr milliseconds LISTENING_STEP(20);
constexpr milliseconds WAITING_STEP(1); // when nothing more can be heard
constexpr milliseconds TIME_TO_DIE(1000);

/// Out of the way of the three that the program gets, of which this process may lack some.
FileHandle move_up(int descriptor)
{
    const FileHandle old(descriptor);
    return FileHandle(::fcntl(descriptor, F_DUPFD_CLOEXEC, FIRST_OF_OWN));
}

/// One of the program's two streams, with what came out of it.
class Stream {
public:
    bool open()
    {
        int ends[2] = {};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return false;
        reader = move_up(ends[0]);
        writer = move_up(ends[1]);
        return reader.is_open() && writer.is_open() &&
               ::fcntl(reader.inq_descriptor(), F_SETFL, O_NONBLOCK) == 0;
    }
    int inq_writer() const { return writer.inq_descriptor(); }
    void leave_to_program() { writer.close(); }

    bool is_open() const { return reader.is_open(); }
    pollfd to_poll() const { return {reader.inq_descriptor(), POLLIN, 0}; }

    /// Takes what is there, and closes the stream at its end.
    void listen(std::size_t most)
    {
        char heard[65536]; // as much as a pipe holds
        const ssize_t n = is_open() ? ::read(reader.inq_descriptor(), heard, sizeof heard) : -1;
        if (n > 0)
            keep({heard, static_cast<std::size_t>(n)}, most);
        else if (is_open() && (n == 0 || (errno != EAGAIN && errno != EINTR)))
            reader.close();
    }

    std::string text;
    bool is_cut = false;

private:
    void keep(std::string_view heard, std::size_t most)
    {
        const std::size_t room = most - text.size();
        text += heard.substr(0, room);
        is_cut = is_cut || heard.size() > room;
    }

    FileHandle reader;
    FileHandle writer;
};

/// What the program starts with.
class Beginning {
public:
    Beginning()
    {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
    }
    Beginning(const Beginning&) = delete;
    Beginning& operator=(const Beginning&) = delete;
    ~Beginning()
    {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    /// 0 or an error number.
    int set_place(const Stream& output, const Stream& errors)
    {
        int error = ::posix_spawn_file_actions_addchdir_np(&actions, "/"); // ours may be gone
        if (!error)
            error = ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null",
                                                       O_RDONLY, 0);
        if (!error)
            error =
                ::posix_spawn_file_actions_adddup2(&actions, output.inq_writer(), STDOUT_FILENO);
        if (!error)
            error =
                ::posix_spawn_file_actions_adddup2(&actions, errors.inq_writer(), STDERR_FILENO);
        if (!error)
            error = ::posix_spawn_file_actions_addclosefrom_np(&actions, FIRST_OF_OWN);
        return error;
    }

    /// A group of its own, no signal blocked, each as the system has it.
    int set_signals()
    {
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::sigdelset(&all, SIGKILL);
        ::sigdelset(&all, SIGSTOP);
        ::posix_spawnattr_setpgroup(&attributes, 0);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        return ::posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

/// The system wants writable words, and does not write them.
std::vector<char*> words_of(const std::vector<KIVString>& texts)
{
    std::vector<char*> words;
    for (const KIVString& text : texts)
        words.push_back(const_cast<char*>(text.c_str()));
    words.push_back(nullptr);
    return words;
}

class Child {
public:
    /// 0 or an error number.
    int start(const Command& command, const Stream& output, const Stream& errors)
    {
        Beginning beginning;
        int error = beginning.set_place(output, errors);
        if (!error)
            error = beginning.set_signals();
        std::vector<KIVString> line = command.arguments;
        line.insert(line.begin(), command.program);
        if (!error)
            error = ::posix_spawn(&pid, command.program.c_str(), &beginning.actions,
                                  &beginning.attributes, words_of(line).data(),
                                  words_of(command.environment).data());
        return error;
    }

    /// Looks for this child alone: others are somebody else's.
    bool has_ended()
    {
        int status = 0;
        const pid_t found = ::waitpid(pid, &status, WNOHANG);
        if (found == pid) {
            end = CommandEnd::WITH_RESULT;
            constexpr int SIGNALS = 128;
            result = WIFEXITED(status) ? WEXITSTATUS(status) : SIGNALS + WTERMSIG(status);
        } else if (found < 0 && errno != EINTR) {
            end = CommandEnd::UNSEEN;
        }
        return end != CommandEnd::LATE;
    }

    /// A child that the system can't end soon, such as one that a lost disc holds, is left behind.
    void kill()
    {
        ::kill(-pid, SIGKILL);
        const Clock::time_point last = Clock::now() + TIME_TO_DIE;
        int status = 0;
        while (::waitpid(pid, &status, WNOHANG) == 0 && Clock::now() < last)
            ::poll(nullptr, 0, static_cast<int>(WAITING_STEP.count()));
    }

    CommandEnd end = CommandEnd::LATE;
    int result = 0;

private:
    pid_t pid = -1;
};

/// Until something is heard, a stream ends or a step of time is over. A signal makes it shorter.
void wait_for(const Stream& output, const Stream& errors, milliseconds left)
{
    pollfd polled[] = {output.to_poll(), errors.to_poll()}; // a closed one is passed over
    const milliseconds step = output.is_open() || errors.is_open() ? LISTENING_STEP : WAITING_STEP;
    ::poll(polled, std::size(polled),
           static_cast<int>(std::clamp(left, milliseconds(0), step).count()));
}
} // namespace

CommandAnswer run(const Command& command)
{
    Stream output;
    Stream errors;
    Child child;
    if (!output.open() || !errors.open())
        return {.result = errno, .output = {}, .errors = {}};
    if (const int error = child.start(command, output, errors))
        return {.result = error, .output = {}, .errors = {}};
    output.leave_to_program();
    errors.leave_to_program();

    const Clock::time_point deadline = Clock::now() + milliseconds(command.deadline_ms);
    while (!child.has_ended() && Clock::now() < deadline) {
        wait_for(output, errors, std::chrono::ceil<milliseconds>(deadline - Clock::now()));
        output.listen(command.most_text);
        errors.listen(command.most_text);
    }
    if (child.end == CommandEnd::LATE)
        child.kill();
    output.listen(command.most_text); // what it started may hold the streams open: no more
    errors.listen(command.most_text);
    return {child.end, child.result, std::move(output.text), std::move(errors.text),
            output.is_cut || errors.is_cut};
}

KIVString find_program(const KIVString& name, const KIVString& path)
{
    std::string_view left = path;
    while (!left.empty()) {
        const std::string_view folder = left.substr(0, left.find(':'));
        left.remove_prefix(std::min(folder.size() + 1, left.size()));
        const KIVString program = KIVString(folder).append_path(name);
        if (folder.starts_with('/') && ::access(program.c_str(), X_OK) == 0)
            return program;
    }
    return {};
}
