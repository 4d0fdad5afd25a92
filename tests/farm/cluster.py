"""A Slurm cluster of the test's own, with everything in one private folder. No systemd and no
control group is needed.

All processes of a cluster are descendants of the test's process, which also adopts those that lose
their parent. So they are ended as its children: a number that only we can free is no stranger's.
"""

import contextlib
import ctypes
import os
import pwd
import random
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

NOT_HERE = 77  # exit status of a test that can't run on this machine
ADOPT_ORPHANS = 36  # PR_SET_CHILD_SUBREAPER
LIMIT = 180  # seconds until something that is waited for counts as lost

# The waits are far shorter than a real farm's: a host counts as lost after 6 seconds and not after
# 300, and a task that lost its host runs again after 5 seconds (the least that is taken), not 120.
# The epilog is there since without one a freed node is noticed only once a second.
CONFIGURATION = """\
ClusterName=test
SlurmctldHost={controller}
SlurmctldPort={port}
SlurmUser={user}
SlurmdUser={user}
AuthInfo=socket={folder}/munge.socket,cred_expire=5
SlurmdTimeout=6
MessageTimeout=5
SchedulerParameters=batch_sched_delay=0,sched_interval=2,bf_interval=2
Epilog=/bin/true
StateSaveLocation={folder}
SlurmdSpoolDir={folder}/spool-%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd-%n.pid
ProctrackType=proctrack/linuxproc
MailProg=/bin/true
ReturnToService=2
{more}
{nodes}
PartitionName=render Nodes=ALL Default=YES State=UP
"""


class NotHere(Exception):
    """Why no cluster can run on this machine."""


def wait_until(condition, what):
    end = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.05)


def inq_children():
    return [int(child) for thread in Path("/proc/self/task").iterdir()
            for child in (thread / "children").read_text().split()]


def end_children():
    """Until there are none, since the children of a killed one become ours."""
    while children := inq_children():
        for child in children:
            os.kill(child, signal.SIGKILL)
        for child in children:
            os.waitpid(child, 0)


def is_named_loopback():
    """Daemons that are to listen at one address alone look for it by the name of the host."""
    try:
        return socket.gethostbyname(socket.gethostname()).startswith("127.")
    except OSError:
        return False


class Cluster:
    """A controller and nodes of one CPU each, on the loopback device. What the test starts
    meanwhile finds the cluster by its environment."""

    controller = "localhost(127.0.0.1)"
    more = "CommunicationParameters=NoInAddrAny,NoCtldInAddrAny" if is_named_loopback() else ""

    def __init__(self, n_nodes):
        os.environ["PATH"] += ":/usr/sbin:/sbin"
        for program in ("munged", "slurmctld", "slurmd", "sbatch"):
            if not shutil.which(program):
                raise NotHere(f"{program} is missing; tools/install_packages "
                              "tools/farm_packages.txt installs it")
        self.nodes = [f"node{number + 1}" for number in range(n_nodes)]
        self.folder = Path(tempfile.mkdtemp(prefix="farm-"))
        self.folder.chmod(0o711)  # munged insists on it
        self.daemons = {}

    def __enter__(self):
        ctypes.CDLL(None).prctl(ADOPT_ORPHANS, 1)
        signal.signal(signal.SIGTERM, signal.default_int_handler)
        with contextlib.ExitStack() as undo:
            undo.callback(self.__exit__)
            try:
                self.start()
            except (LookupError, OSError, subprocess.SubprocessError) as reason:
                raise NotHere(f"no cluster starts here: {reason}") from reason
            undo.pop_all()
        return self

    def __exit__(self, *_):
        end_children()
        for daemon in self.daemons.values():
            daemon.communicate()  # closes what it was told by
        shutil.rmtree(self.folder)

    def start(self):
        self.write_configuration()
        key = self.folder / "munge.key"
        key.write_bytes(random.randbytes(128))
        key.chmod(0o400)
        at = self.folder / "munge.socket"
        self.launch("munged", "--foreground", f"--socket={at}", f"--key-file={key}",
                    f"--pid-file={self.folder}/munged.pid", f"--seed-file={self.folder}/seed")
        self.wait_for_daemons(at.exists)
        self.launch("slurmctld", "-D")
        for node in self.nodes:
            self.start_node(node)
        self.wait_for_nodes()

    def write_configuration(self):
        port, places = self.choose_places()
        nodes = [f"NodeName={node} {place}" for node, place in zip(self.nodes, places)]
        configuration = self.folder / "slurm.conf"
        configuration.write_text(CONFIGURATION.format(
            controller=self.controller, port=port, user=pwd.getpwuid(os.getuid()).pw_name,
            folder=self.folder, more=self.more, nodes="\n".join(nodes)))
        (self.folder / "cgroup.conf").write_text("CgroupPlugin=cgroup/v1\n")
        os.environ["SLURM_CONF"] = str(configuration)

    def choose_places(self):
        """The controller's port, and where each node is."""
        ports = []
        while len(ports) <= len(self.nodes):
            port = random.randrange(20000, 32000)  # clients get higher ones from the system
            with socket.socket() as trial:
                if port not in ports and trial.connect_ex(("127.0.0.1", port)) != 0:
                    ports.append(port)
        return ports[0], [f"NodeHostname=localhost NodeAddr=127.0.0.1 Port={port}"
                          for port in ports[1:]]

    def start_node(self, node):
        self.launch("slurmd", "-D", "-N", node, name=node)

    def restart_controller(self):
        """It knows no job of its last seconds any more."""
        self.kill("slurmctld")
        self.launch("slurmctld", "-D")

    def kill(self, name):
        daemon = self.daemons.pop(name)
        daemon.kill()
        daemon.communicate()

    def launch(self, *command, name=None, stdin=subprocess.DEVNULL):
        """A daemon, which dies with us however we die."""
        name = name or command[0]
        with open(self.folder / f"{name}.log", "ab") as log:
            self.daemons[name] = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", *command], start_new_session=True, stdin=stdin,
                stdout=log, stderr=log)
        return self.daemons[name]

    def wait_for_daemons(self, condition):
        """While they live."""
        def is_met():
            for name, daemon in self.daemons.items():
                if daemon.poll() is not None:
                    log = (self.folder / f"{name}.log").read_text().splitlines()
                    raise OSError(f"{name} ended: {' '.join(log[-2:])}")
            return condition()
        wait_until(is_met, "the daemons do nothing")

    def wait_for_nodes(self):
        """Until all can be used."""
        self.wait_for_daemons(lambda: set(self.nodes) == set(
            self.ask("sinfo", "-hN", "-t", "idle,alloc,mix,comp", "-o", "%N").split()))

    def ask(self, *command):
        """What a command of Slurm's prints; nothing if it fails."""
        return subprocess.run(command, capture_output=True, text=True, check=False,
                              timeout=LIMIT).stdout

    def wait_until_idle(self):
        wait_until(lambda: not self.ask("squeue", "-h"), "the queue does not become empty")
