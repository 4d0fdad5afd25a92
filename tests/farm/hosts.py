"""A cluster whose nodes are hosts, each with its own network, name and processes; the files are
common to all, like a farm's storage. The test is on the controller's host, and nothing of this is
joined to the network of the machine. Root may make such hosts."""

import os
import subprocess
import sys

from cluster import Cluster, NotHere, wait_until

APART = ("unshare", "--net", "--uts", "--mount", "--pid", "--fork", "--kill-child",
         "--mount-proc")
NETWORK = "10.0.0."

# A host's first process, which buries all others. A line makes it join the network and start its
# daemon, a second one kill the daemon.
HOST = """
hostname $1
read -r address
ip link set lo up; ip address add $address/24 dev eth0; ip link set eth0 up
slurmd -D -N $1 &
read -r
kill -KILL $!
while sleep 1; do :; done
"""


def go_apart():
    """Starts this program again where it is alone."""
    if os.environ.get("MONTARAY_APART"):
        return
    trial = subprocess.run([*APART, "ip", "link", "set", "lo", "up"], check=False,
                           capture_output=True, text=True)
    if trial.returncode != 0:
        raise NotHere(f"no hosts can be made here: {trial.stderr.strip()}")
    os.environ["MONTARAY_APART"] = "yes"
    os.execvp(APART[0], [*APART, sys.executable, *sys.orig_argv[1:]])


def ip(*words):
    subprocess.run(["ip", *map(str, words)], check=True)


class Hosts(Cluster):
    controller = f"controller({NETWORK}1)"
    more = ""

    def __init__(self, n_nodes):
        go_apart()
        super().__init__(n_nodes)

    def start(self):
        subprocess.run(["hostname", "controller"], check=True)
        ip("link", "set", "lo", "up")
        ip("link", "add", "hub", "type", "bridge")
        ip("address", "add", f"{NETWORK}1/24", "dev", "hub")
        ip("link", "set", "hub", "up")
        super().start()

    def address_of(self, node):
        return f"{NETWORK}{self.nodes.index(node) + 2}"

    def choose_places(self):
        return 6817, [f"NodeHostname={node} NodeAddr={self.address_of(node)} Port=6818"
                      for node in self.nodes]

    def start_node(self, node):
        host = self.launch(*APART, "bash", "-c", HOST, "host", node, name=node,
                           stdin=subprocess.PIPE)
        ours = os.readlink("/proc/self/ns/net")
        wait_until(lambda: os.readlink(f"/proc/{host.pid}/ns/net") != ours, "no network")
        ip("link", "add", node, "type", "veth", "peer", "name", "eth0", "netns", host.pid)
        ip("link", "set", node, "master", "hub", "up")
        self.tell(node, self.address_of(node))

    def tell(self, node, line=""):
        self.daemons[node].stdin.write(f"{line}\n".encode())
        self.daemons[node].stdin.flush()

    def kill_daemon(self, node):
        """Its tasks go on."""
        self.tell(node)

    def cut_power(self, node):
        """It says no goodbye on the network."""
        ip("link", "delete", node)
        self.kill(node)

    def pull_cable(self, node):
        ip("link", "set", node, "down")

    def plug_cable(self, node):
        ip("link", "set", node, "up")
