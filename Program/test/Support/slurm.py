"""A Slurm farm of one machine, in a folder of its own and on ports of its own, from Debian's packages."""
import getpass
import os
import shutil
import socket
import subprocess
import time

PACKAGES = ["slurmctld", "slurmd", "slurm-client", "slurm-wlm-basic-plugins"]

CONFIGURATION = """
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/none
AuthInfo=cred_expire=1
CredType=cred/none
MpiDefault=none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=1,bf_interval=1,batch_sched_delay=0,defer_batch=0
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
SwitchType=switch/none
SlurmctldPort={ports[0]}
SlurmdPort={ports[1]}
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
PluginDir={libraries}
ReturnToService=2
MaxArraySize=50
KillWait=30
NodeName={host} NodeAddr=127.0.0.1 CPUs={cores} State=UNKNOWN
PartitionName=all Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


class Farm:
    def __init__(self, cache, folder, cores):
        """Unpacks Slurm into `cache` unless it is there, and starts it in `folder`. Its services are never installed."""
        root = os.path.join(cache, "root")
        if not os.path.isdir(root):
            self._unpack(cache, root)
        libraries = os.path.join(root, "usr/lib/x86_64-linux-gnu/slurm-wlm")
        for name in ("state", "spool"):
            os.makedirs(os.path.join(folder, name))
        configuration = os.path.join(folder, "slurm.conf")
        self.environment = {**os.environ, "SLURM_CONF": configuration, "LD_LIBRARY_PATH": libraries,
                            "PATH": os.path.join(root, "usr/bin") + ":" + os.environ["PATH"]}
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION.format(host=socket.gethostname(), user=getpass.getuser(), ports=free_ports(2),
                                            folder=folder, libraries=libraries, cores=cores))
        programs = os.path.join(root, "usr/sbin")
        self.log = open(os.path.join(folder, "daemons.log"), "w", encoding="utf-8")
        self.daemons = []
        try:
            self._start(programs + "/slurmctld-wlm", "-D", "-i", "-f", configuration)
            self._start(programs + "/slurmd-wlm", "-D", "-f", configuration, "-d", programs + "/slurmstepd-wlm")
            self._wait_until_ready(folder)
        except BaseException:
            self.stop()
            raise

    @staticmethod
    def _unpack(cache, root):
        os.makedirs(cache, exist_ok=True)
        for is_last in (False, True):
            download = subprocess.run(["apt-get", "download", "-q", "-o", "Acquire::Retries=5", *PACKAGES], cwd=cache,
                                      check=is_last, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            if download.returncode == 0:
                break
            # The lists of packages are missing or old, as in an image made for the tests.
            subprocess.run(["apt-get", "update", "-qq"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        unfinished = root + ".new"
        shutil.rmtree(unfinished, ignore_errors=True)
        for name in os.listdir(cache):
            if name.endswith(".deb"):
                subprocess.run(["dpkg", "-x", name, unfinished], cwd=cache, check=True)
        os.rename(unfinished, root)

    def _start(self, *command):
        self.daemons.append(subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=self.log,
                                             stderr=self.log))

    def _wait_until_ready(self, folder):
        for _ in range(300):
            if "idle" in self.run("sinfo", "--noheader", "--format=%T", check=False):
                return
            if any(daemon.poll() is not None for daemon in self.daemons):
                break
            time.sleep(0.2)
        texts = []
        for name in ("daemons.log", "slurmctld.log", "slurmd.log"):
            path = os.path.join(folder, name)
            if os.path.exists(path):
                with open(path, encoding="utf-8") as file:
                    texts.append(file.read())
        raise RuntimeError("Slurm did not start.\n" + "\n".join(texts))

    def run(self, *command, check=True):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding="utf-8", check=check, timeout=60).stdout

    def stop(self):
        """Ends all jobs first: a step outlives its daemon, to which it wants to report its end."""
        if all(daemon.poll() is None for daemon in self.daemons):
            self.run("scancel", "--user=" + getpass.getuser(), check=False)
            for _ in range(150):
                if not self.run("squeue", "--noheader", check=False).strip():
                    break
                time.sleep(0.2)
        for daemon in reversed(self.daemons):
            daemon.terminate()
        for daemon in self.daemons:
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()
        self.log.close()


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    try:
        for one in sockets:
            one.bind(("127.0.0.1", 0))
        return [one.getsockname()[1] for one in sockets]
    finally:
        for one in sockets:
            one.close()
