"""Machines for tests, on this one: ssh daemons on two addresses, and a Slurm cluster of two nodes.

Both need nothing but an ordinary user, and leave nothing behind. A machine can be killed as by a
power cut: its daemon and all that runs there. Its `quorl-js` is a wrapper that notes each run, and
that hangs while the machine is held, so that a test can kill it in the middle of a run.
"""
import collections
import contextlib
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

SECONDS = 120  # for anything to happen
POLL_SECONDS = 0.05
TOOLS_PATH = "/usr/local/bin:/usr/bin:/bin"
WRAPPER = """#!/bin/sh
machine={machine}
echo run >>"{folder}/runs-$machine"
while [ -e "{folder}/held-$machine" ]; do sleep 0.1; done
exec "{quorl_js}" "$@"
"""


def wait_until(holds, what):
    end = time.monotonic() + SECONDS
    while not holds():
        assert time.monotonic() < end, what
        time.sleep(POLL_SECONDS)


def missing(*programs):
    """The first of the programs that this machine does not have, daemons too."""
    path = "%s:/usr/local/sbin:/usr/sbin:/sbin" % os.environ["PATH"]
    return next((name for name in programs if shutil.which(name, path=path) is None), None)


def daemon(name):
    return shutil.which(name, path="/usr/local/sbin:/usr/sbin:/sbin:" + os.environ["PATH"])


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


Process = collections.namedtuple("Process", "parent command environment")


def processes():
    """All that can be read, by number."""
    found = {}
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            parent = int((folder / "stat").read_text().rpartition(")")[2].split()[1])
            found[int(folder.name)] = Process(parent, (folder / "cmdline").read_bytes(),
                                              (folder / "environ").read_bytes())
        except (OSError, ValueError, IndexError):
            continue  # it has just ended, or is somebody else's
    return found


def kill_all(chosen_of):
    """Kills the processes that are chosen of all there are and what is below them, until there are
    none. All stand still before the first is gone, so that none can tell of it."""
    def victims():
        every = processes()
        chosen = chosen_of(every)
        while True:
            more = {pid for pid, each in every.items() if each.parent in chosen} - chosen
            if not more:
                return chosen - {os.getpid()}
            chosen |= more

    def all_gone():
        found = victims()
        for number in (signal.SIGSTOP, signal.SIGKILL):
            for pid in found:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, number)
        return not found
    wait_until(all_gone, "processes that cannot be killed")


class Nodes:
    """What the machines of either kind have."""

    def __init__(self, folder, names, quorl_js):
        self.folder, self.names, self.quorl_js = folder, names, quorl_js

    def write_wrapper(self, folder, machine):
        folder.mkdir(parents=True)
        path = folder / "quorl-js"
        path.write_text(WRAPPER.format(machine=machine, folder=self.folder, quorl_js=self.quorl_js))
        path.chmod(0o755)

    def runs(self, name):
        """How often quorl-js was started on the machine."""
        path = self.folder / ("runs-" + name)
        return len(path.read_text().splitlines()) if path.exists() else 0

    def forget_runs(self):
        for path in self.folder.glob("runs-*"):
            path.unlink()

    def hold(self, name):
        (self.folder / ("held-" + name)).touch()

    def kill_in_a_run(self, name):
        """Kills a machine that is held as soon as it runs something."""
        wait_until(lambda: self.runs(name) > 0, "nothing runs on " + name)
        self.kill(name)
        (self.folder / ("held-" + name)).unlink()

    def kill(self, name):
        raise NotImplementedError

    def close(self):
        for name in self.names:
            self.kill(name)


class SshNodes(Nodes):
    """Ssh daemons on addresses of this machine, with keys of their own."""

    def __init__(self, folder, quorl_js):
        super().__init__(folder, ["127.0.0.1", "127.0.0.2"], quorl_js)
        self.port, = free_ports(1)
        for key in "host_key", "user_key":
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / key],
                           check=True)
        host_key = (folder / "host_key.pub").read_text()
        (folder / "known_hosts").write_text("".join("[%s]:%d %s" % (name, self.port, host_key)
                                                    for name in self.names))
        (folder / "ssh_config").write_text(
            "Port %d\nIdentityFile %s/user_key\nIdentitiesOnly yes\nBatchMode yes\n"
            "UserKnownHostsFile %s/known_hosts\nStrictHostKeyChecking yes\n"
            % (self.port, folder, folder))
        for name in self.names:
            self.write_wrapper(folder / "bin" / name, name)
        if os.getuid() == 0:  # the daemon asks for it, and a system without init has not made it
            pathlib.Path("/run/sshd").mkdir(mode=0o755, exist_ok=True)

    def start(self, name):
        config = self.folder / ("sshd-" + name)
        config.write_text(
            "ListenAddress %s:%d\nHostKey %s/host_key\nAuthorizedKeysFile %s/user_key.pub\n"
            "PidFile none\nStrictModes no\nUsePAM no\nPasswordAuthentication no\n"
            "KbdInteractiveAuthentication no\nMaxStartups 100\nSetEnv PATH=%s/bin/%s:%s\n"
            % (name, self.port, self.folder, self.folder, self.folder, name, TOOLS_PATH))
        with open(self.folder / "sshd.log", "ab") as log:
            subprocess.Popen([daemon("sshd"), "-D", "-e", "-f", config], stdin=subprocess.DEVNULL,
                             stdout=log, stderr=log)

        def answers():
            try:
                socket.create_connection((name, self.port)).close()
            except ConnectionRefusedError:
                return False
            return True
        wait_until(answers, "sshd does not answer on " + name)

    def kill(self, name):
        config = os.fsencode(self.folder / ("sshd-" + name))
        kill_all(lambda every: {pid for pid, each in every.items() if config in each.command})


class SlurmNodes(Nodes):
    """A cluster of two nodes with its own controller and its own keys."""

    def __init__(self, folder, quorl_js):
        super().__init__(folder, ["n1", "n2"], quorl_js)
        self.conf = b"SLURM_CONF=%s/slurm.conf\0" % os.fsencode(folder)
        self.write_wrapper(folder / "bin", "$SLURMD_NODENAME")
        (folder / "key").write_bytes(os.urandom(128))
        (folder / "key").chmod(0o600)
        (folder / "state").mkdir()
        user = subprocess.run(["id", "-un"], check=True, stdout=subprocess.PIPE).stdout.decode()
        host = socket.gethostname().partition(".")[0]
        controller, *ports = free_ports(3)
        settings = [
            "ClusterName=test", "SlurmctldHost=%s(127.0.0.1)" % host,
            "SlurmUser=" + user.strip(), "SlurmdUser=" + user.strip(),
            "SlurmctldPort=%d" % controller,
            "AuthType=auth/munge", "CredType=cred/munge",
            # A job that lost its node may start again when what allowed its first start expires.
            "AuthInfo=socket=%s/munge,cred_expire=5" % folder,
            "StateSaveLocation=%s/state" % folder, "SlurmdSpoolDir=%s/spool-%%n" % folder,
            "SlurmctldPidFile=%s/slurmctld.pid" % folder, "SlurmdPidFile=%s/%%n.pid" % folder,
            "SlurmctldLogFile=%s/slurmctld.log" % folder, "SlurmdLogFile=%s/%%n.log" % folder,
            "ProctrackType=proctrack/linuxproc", "TaskPlugin=task/none", "MpiDefault=none",
            "SelectType=select/cons_tres", "SelectTypeParameters=CR_Core", "ReturnToService=2",
            # Nodes are taken to have the processors of their lines, on any machine.
            "SlurmdParameters=config_overrides",
            # A node that says nothing for so long is taken for dead, and its jobs run again.
            "SlurmdTimeout=10", "MessageTimeout=5", "SchedulerType=sched/backfill",
            "SchedulerParameters=sched_interval=1,batch_sched_delay=0,bf_interval=1"]
        settings += ["NodeName=%s NodeHostname=%s NodeAddr=127.0.0.%d Port=%d CPUs=4" %
                     (name, host, number, port)
                     for number, (name, port) in enumerate(zip(self.names, ports), 1)]
        settings += ["PartitionName=all Nodes=n1,n2 Default=YES State=UP"]
        (folder / "slurm.conf").write_text("\n".join(settings) + "\n")
        self.env = dict(os.environ, SLURM_CONF=str(folder / "slurm.conf"),
                        PATH="%s/bin:%s" % (folder, TOOLS_PATH))
        self.run("munged", "--key-file=%s/key" % folder, "--socket=%s/munge" % folder,
                 "--pid-file=%s/munged.pid" % folder, "--log-file=%s/munged.log" % folder,
                 "--seed-file=%s/seed" % folder, "--force")
        self.run("slurmctld", "-c")

    def run(self, program, *arguments):
        subprocess.run([daemon(program), *arguments], env=self.env, check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def state(self, name):
        done = subprocess.run(["sinfo", "--noheader", "--nodes", name, "--format=%T"], env=self.env,
                              check=False, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return done.stdout.decode().strip()

    def start(self, name):
        (self.folder / ("spool-" + name)).mkdir(exist_ok=True)
        self.run("slurmd", "-N", name)
        wait_until(lambda: self.state(name) == "idle", name + " does not come up")

    def kill(self, name):
        mark, option = (text % name.encode() for text in (b"SLURMD_NODENAME=%s\0", b"-N\0%s\0"))

        def chosen_of(every):
            chosen = {pid for pid, each in every.items() if self.conf in each.environment and
                      (mark in each.environment or option in each.command)}
            # What starts a job and waits for it does not show for which node.
            waiting = {pid for pid, each in every.items() if each.command.startswith(b"slurmstepd")}
            return chosen | waiting & {every[pid].parent for pid in chosen}
        kill_all(chosen_of)

    def close(self):
        for name in self.names:
            self.kill(name)
        folder = os.fsencode(self.folder)
        kill_all(lambda every: {pid for pid, each in every.items()
                                if folder in each.command or self.conf in each.environment})
