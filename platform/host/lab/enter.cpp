// vek-lab enter: mount, network, process and user namespaces in which a router stands. What is written there
// is gone at the end, and so is every process.
#include "lab/enter.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>

#include "linux/file.h"
#include "linux/process.h"

namespace {

using Words = std::vector<std::string>;

void write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text << std::flush;
  if (!file) throw_errno(path);
}

// ---- Files ----

void mount_new(const char* type, const std::string& where, const std::string& options = "") {
  const char* const data = options.empty() ? nullptr : options.c_str();
  if (mount(type, where.c_str(), type, MS_NOSUID | MS_NODEV, data) != 0) {
    throw_errno(std::string("cannot mount ") + type + " on " + where);
  }
}

void bind_mount(const std::string& from, const std::string& to) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    throw_errno("cannot mount " + to);
}

void set_read_only(const std::string& where, bool is_wanted, unsigned flags = 0) {
  mount_attr attributes = {};
  (is_wanted ? attributes.attr_set : attributes.attr_clr) = MOUNT_ATTR_RDONLY;
  if (mount_setattr(AT_FDCWD, where.c_str(), flags, &attributes, sizeof attributes) != 0) {
    throw_errno("cannot make " + where + " read-only");
  }
}

using Keeps = std::function<bool(const std::string& name)>;

// Makes a folder that can be written to, with those entries that are kept as they were.
void cover(const std::string& folder, const Keeps& keeps) {
  const int fd = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  struct stat found = {};
  if (fd < 0 || fstat(fd, &found) != 0) throw_errno(folder);
  std::ostringstream mode;
  mode << "mode=" << std::oct << (found.st_mode & 07777);
  mount_new("tmpfs", folder, mode.str());
  // Through the descriptor the folder is seen as it was.
  const std::filesystem::path before = "/proc/self/fd/" + std::to_string(fd);
  for (const auto& entry : std::filesystem::directory_iterator(before)) {
    const std::string name = entry.path().filename();
    const std::string path = std::filesystem::path(folder) / name;
    if (!keeps(name)) continue;
    if (entry.is_symlink()) {
      std::error_code gone;
      std::filesystem::copy_symlink(entry.path(), path, gone);
      continue;
    }
    if (entry.symlink_status().type() == std::filesystem::file_type::directory) {
      std::filesystem::create_directory(path);
    } else {
      write_file(path, "");
    }
    if (mount(entry.path().c_str(), path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0) continue;
    if (errno != ENOENT) throw_errno("cannot mount " + path);
    std::filesystem::remove(path);  // others have taken it away meanwhile
  }
  close(fd);
}

Keeps all_but(const std::string& left_out) {
  return [left_out](const std::string& name) { return name != left_out; };
}

// What root may do to the machine beyond its files: its disks, and settings that are not of a namespace.
void make_kernel_files() {
  cover("/dev", [](const std::string& name) {
    constexpr const char* kKept[] = {"null", "zero", "full", "random", "urandom", "tty",
                                     "ptmx", "pts",  "fd",   "stdin",  "stdout",  "stderr"};
    return std::ranges::find(kKept, name) != std::end(kKept);
  });
  std::filesystem::create_directory("/dev/shm");
  chmod("/dev/shm", 01777);
  mount_new("proc", "/proc");
  for (const char* path : {"/proc/sys", "/proc/sys/net", "/proc/sysrq-trigger"}) {
    if (access(path, F_OK) != 0) continue;
    bind_mount(path, path);
    set_read_only(path, path != std::string("/proc/sys/net"));
  }
  mount_new("sysfs", "/sys");
  set_read_only("/sys", true);
}

void make_files() {
  if (mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) throw_errno("cannot detach the mounts");
  set_read_only("/", true, AT_RECURSIVE);
  make_kernel_files();
  mount_new("tmpfs", "/run", "mode=755");
  cover("/etc", all_but("upgrade"));
  cover("/var/log", all_but("zebra.log"));
  cover("/var/tmp", all_but("frr"));
  cover("/tmp", all_but("mnt"));
  std::filesystem::create_directories("/tmp/mnt/usblog");
  mount_new("tmpfs", "/tmp/mnt/usblog");
  std::filesystem::create_directory("/run/vek");
  chmod("/run/vek", 0700);
}

// ---- The network: each interface leads to a host in a network of its own ----

constexpr const char* kMakeLink = R"(
ip netns add $1-peer
ip link add $1 type veth peer name eth0 netns $1-peer
ip address add $2/24 dev $1
ip link set $1 up
ip -n $1-peer address add $3/24 dev eth0
ip -n $1-peer link set lo up
ip -n $1-peer link set eth0 up
ip -n $1-peer route add default via $2
)";

void run_shell(const std::string& script, const Words& words = {}) {
  Words all = {"/bin/sh", "-ec", script, "sh"};
  all.insert(all.end(), words.begin(), words.end());
  if (run_program(all, kOurs) != 0) {
    throw std::runtime_error("the network cannot be made (by ip, Debian package iproute2)");
  }
}

void make_network() {
  run_shell("ip link set lo up");
  run_shell(kMakeLink, {"lan0", "192.168.1.1", "192.168.1.2"});
  run_shell(kMakeLink, {"wan0", "203.0.113.2", "203.0.113.1"});
  run_shell(kMakeLink, {"wan1", "198.51.100.2", "198.51.100.1"});
  write_file("/proc/sys/net/ipv4/ip_forward", "1");
  if (access("/proc/sys/net/ipv6", F_OK) == 0) write_file("/proc/sys/net/ipv6/conf/all/forwarding", "1");
}

// ---- The routing daemons ----

// They insist on being in a group of theirs, which a user has no number for: here it is root's.
void join_group() {
  const std::string group = "/run/group";
  std::ifstream all("/etc/group");
  std::ostringstream ours;
  for (std::string line; std::getline(all, line);) {
    if (!line.starts_with("frrvty:")) ours << line << "\n";
  }
  ours << "frrvty:x:0:root\n";
  write_file(group, ours.str());
  bind_mount(group, "/etc/group");
}

void start_routing() {
  const std::string folder = "/usr/lib/frr/";
  if (access((folder + "zebra").c_str(), X_OK) != 0 || access("/etc/frr", F_OK) != 0) {
    throw std::runtime_error("FRR is not installed (Debian package frr)");
  }
  join_group();
  mount_new("tmpfs", "/etc/frr");
  write_file("/etc/frr/vtysh.conf", "");
  std::filesystem::create_directory("/run/frr");
  // Newer ones are told their settings by mgmtd.
  for (const char* daemon : {"zebra", "mgmtd", "staticd", "ospfd", "ospf6d", "ripd", "ripngd"}) {
    const std::string program = folder + daemon;
    if (daemon == std::string("mgmtd") && access(program.c_str(), X_OK) != 0) continue;
    const Words words = {program, "-d", "-u", "root", "-g", "root", "--log", "file:/var/log/zebra.log"};
    if (run_program(words, kSilenced) != 0) throw std::runtime_error(std::string(daemon) + " does not start");
  }
}

// ---- Processes ----

[[noreturn]] void execute(const Words& command) {
  std::vector<char*> argv;
  for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  signal(SIGINT, SIG_DFL);
  signal(SIGQUIT, SIG_DFL);
  execvp(argv[0], argv.data());
  fprintf(stderr, "vek-lab: %s: %s\n", argv[0], strerror(errno));
  _exit(127);
}

int status_of(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

// The first process of the namespace: when it ends, the kernel ends all others.
int live(bool has_routing, const Words& command, const std::string& folder) {
  make_files();
  make_network();
  if (has_routing) start_routing();
  if (sethostname("router", 6) != 0) throw_errno("sethostname");
  const std::string own = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const char* const path = getenv("PATH");
  setenv("PATH",
         (own + ":" + (path == nullptr ? "" : std::string(path) + ":") + "/usr/sbin:/usr/bin").c_str(), 1);
  setenv("VEK_STATE", "/run/vek", 1);
  unsetenv("VEK_FRR_VTY");
  if (chdir(folder.c_str()) != 0) throw_errno(folder);  // once more: it may be covered now

  const pid_t child = fork();
  if (child < 0) throw_errno("fork");
  if (child == 0) execute(command);
  for (int status = 0;;) {
    const pid_t ended = waitpid(-1, &status, 0);
    if (ended == child) return status_of(status);
    if (ended < 0 && errno != EINTR) throw_errno("wait");
  }
}

// The ids of the new namespace: all that we have for root, root alone for others.
std::string id_map(const char* file, unsigned id) {
  if (geteuid() != 0) return "0 " + std::to_string(id) + " 1\n";
  std::ifstream ours(file);
  std::string map;
  for (std::string inside, outside, count; ours >> inside >> outside >> count;) {
    map += inside;
    map += " ";
    map += inside;
    map += " ";
    map += count;
    map += "\n";
  }
  return map;
}

void map_ids(pid_t child) {
  const std::string folder = "/proc/" + std::to_string(child) + "/";
  if (geteuid() != 0) write_file(folder + "setgroups", "deny");
  write_file(folder + "uid_map", id_map("/proc/self/uid_map", geteuid()));
  write_file(folder + "gid_map", id_map("/proc/self/gid_map", getegid()));
}

pid_t fork_into(int namespaces) {
  return static_cast<pid_t>(syscall(SYS_clone, namespaces | SIGCHLD, 0, 0, 0, 0));
}

}  // namespace

int enter(std::vector<std::string> command) {
  const bool has_routing = !command.empty() && command[0] == "--routing";
  if (has_routing) command.erase(command.begin());
  if (command.empty()) {
    const char* const shell = getenv("SHELL");
    command = {shell == nullptr || *shell == '\0' ? "/bin/sh" : shell};
  }
  const std::string folder = std::filesystem::current_path();
  int go[2];
  if (pipe2(go, O_CLOEXEC) != 0) throw_errno("pipe");
  signal(SIGINT, SIG_IGN);  // a terminal sends them to the command as well
  signal(SIGQUIT, SIG_IGN);

  constexpr int kNamespaces = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWUTS | CLONE_NEWIPC;
  bool has_users = true;
  pid_t child = fork_into(kNamespaces | CLONE_NEWUSER);
  if (child < 0 && geteuid() == 0) {
    has_users = false;
    child = fork_into(kNamespaces);
  }
  if (child < 0) {
    throw_errno(
        "no namespaces: the kernel has to allow users theirs (kernel.unprivileged_userns_clone, "
        "kernel.apparmor_restrict_unprivileged_userns, user.max_user_namespaces), or run it as root");
  }
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    close(go[1]);
    char byte = 0;
    if (read(go[0], &byte, 1) != 1) _exit(1);
    int status = 1;
    try {
      if (has_users && (setresgid(0, 0, 0) != 0 || setresuid(0, 0, 0) != 0)) throw_errno("cannot be root");
      status = live(has_routing, command, folder);
    } catch (const std::exception& error) {
      fprintf(stderr, "vek-lab: %s\n", error.what());
    }
    _exit(status);
  }
  close(go[0]);
  try {
    if (has_users) map_ids(child);
    if (write(go[1], "", 1) != 1) throw_errno("pipe");
  } catch (...) {
    close(go[1]);
    waitpid(child, nullptr, 0);
    throw;
  }
  close(go[1]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return status_of(status);
}
