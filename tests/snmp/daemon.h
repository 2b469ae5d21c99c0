// A real SNMP daemon, Debian's snmpd, on a loopback port, with everything that it reads and writes in a folder of its
// own. It is gone when the test ends, however that ends.
#ifndef DOV0610_TESTS_SNMP_DAEMON_H
#define DOV0610_TESTS_SNMP_DAEMON_H

#include "snmp/responder.h"
#include "support/command.h"
#include "support/program.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/prctl.h>

class SnmpDaemon {
public:
    explicit SnmpDaemon(const std::string &configuration)
    {
        // Another process may take the port before the daemon does.
        for (int i = 0; i < 5 && process < 0; ++i) {
            start(configuration, std::to_string(LoopbackSocket().port));
            answers = comesUp();
        }
        EXPECT_TRUE(answers) << "snmpd does not answer: " << contentsOf(folder.file("log"));
    }
    ~SnmpDaemon() { stop(); }
    SnmpDaemon(const SnmpDaemon &) = delete;
    SnmpDaemon &operator=(const SnmpDaemon &) = delete;

    // What a tool of the daemon's project (snmpget, snmpwalk) prints, with numbers for names.
    Outcome tool(const std::string &name, const std::string &names, const std::string &options = "") const
    {
        return run(environment() + name + " -v2c -c demo -On -Ox " + options + " " + target + " " + names);
    }

    std::string target;
    bool answers = false;

private:
    std::string environment() const
    {
        return "MIBS= SNMPCONFPATH=" + folder.path + " SNMP_PERSISTENT_DIR=" + folder.file("state") + " ";
    }

    void start(const std::string &configuration, const std::string &port)
    {
        target = "127.0.0.1:" + port;
        const std::string command = environment() + "PATH=\"$PATH:/usr/sbin:/sbin\" exec snmpd -f -C -c " +
                                    configuration + " -Lf " + folder.file("log") + " -p " +
                                    folder.file("pid") + " udp:" + target + " 2>>" + folder.file("log");
        process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
    }

    bool comesUp()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < end) {
            if (waitpid(process, nullptr, WNOHANG) != 0) {
                process = -1;
                return false;
            }
            if (tool("snmpget", "1.3.6.1.2.1.1.3.0", "-r 0 -t 0.2").status == 0) {
                return true;
            }
        }
        return false;
    }

    void stop()
    {
        if (process > 0) {
            kill(process, SIGKILL); // it has nothing to tidy up: its folder goes, too
            waitpid(process, nullptr, 0);
        }
        process = -1;
    }

    const TemporaryFolder folder;
    pid_t process = -1;
};

#endif
