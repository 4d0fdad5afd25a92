#include "batchapi/src/SlurmConfiguration.h"

#include "kivlib/hdr/file_operations.h"

#include <arpa/nameser.h>
#include <chrono>
#include <cstdlib>
#include <netinet/in.h>
#include <resolv.h>

namespace {
using Clock = std::chrono::steady_clock;

/// Whether the network tells hosts where the service is, in one of the domains where the service's
/// commands look for it. A server that is silent is waited for a short time.
bool ask_network(const KIVString& service)
{
    struct __res_state resolver {};
    if (service.is_null() || ::res_ninit(&resolver) != 0)
        return false;
    resolver.retrans = 1;
    resolver.retry = 1;
    unsigned char answer[NS_PACKETSZ];
    const int length =
        ::res_nsearch(&resolver, service.c_str(), ns_c_in, ns_t_srv, answer, sizeof answer);
    ::res_nclose(&resolver);
    return length > 0;
}

/// Asks once: each command comes by here. A no is doubted after a while, as the network may have
/// been down.
bool is_told_by_network(const KIVString& service)
{
    struct Answer {
        bool is_yes = false;
        Clock::time_point ask_again_at;
    };
    constexpr std::chrono::minutes LIFE_OF_A_NO(1);
    static std::unordered_map<std::string, Answer> answers;
    Answer& answer = answers[service.str()];
    if (!answer.is_yes && Clock::now() >= answer.ask_again_at)
        answer = {ask_network(service), Clock::now() + LIFE_OF_A_NO};
    return answer.is_yes;
}
} // namespace

KIVString find_configuration_fault(const SlurmEngine::Settings& settings)
{
    if (const char* told = std::getenv("SLURM_CONF"))
        return inq_file_exists(told) ? KIVString()
                                     : KIVString("SLURM_CONF: ") + told + " is not there.";
    if (std::ranges::any_of(settings.configurations, inq_file_exists) ||
        is_told_by_network(settings.network_service))
        return {};
    return "No configuration of Slurm was found: SLURM_CONF is not set, and the usual places are "
           "empty.";
}
