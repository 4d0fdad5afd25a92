#pragma once

#include "batchapi/hdr/BatchEngine.h"

/// The batch service Slurm, asked by its own commands: a fault of theirs stays outside this
/// program. One that does not answer in time is ended.
class SlurmEngine : public BatchEngine {
public:
    /// Where the commands and their configuration are, and how long a command may take.
    struct Settings {
        KIVString path; // folders with colons between; empty: the program's own PATH
        std::vector<KIVString> configurations = {
            "/etc/slurm/slurm.conf", "/etc/slurm-llnl/slurm.conf", "/run/slurm/conf/slurm.conf"};
        KIVString network_service = "_slurmctld._tcp"; // asked for where no file is
        int deadline_ms = 15000;
    };

    SlurmEngine() = default;
    explicit SlurmEngine(const Settings& settings) : settings(settings) {}

    bool submit(const BatchJob& job, KIVString* error) override;
    bool query(const KIVString& name, const KIVString& user, std::vector<BatchTask>* tasks,
               KIVString* error) override;
    bool cancel(const KIVString& name, KIVString* error) override;
    bool inq_highest_index(int* index, KIVString* error) override;

private:
    bool send(const BatchJob& job, const KIVString& indices, const KIVString& script,
              KIVString* error) const;
    bool call(const char* program, const std::vector<KIVString>& arguments, std::string* output,
              KIVString* error) const;

    Settings settings;
    int highest_index = -1; // until it was asked
};
