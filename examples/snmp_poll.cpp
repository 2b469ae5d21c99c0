// snmp_poll - polls a node over SNMP, as a data provider of the agent does: it asks for the system group and walks the
// interfaces, stamps each sample, writes the samples into a record for the data collection host, and reads that back.
//
//     snmp_poll 192.0.2.1                     the node, or its name; port 161, community "public"
//     snmp_poll router:1161 --community inner --timeout 500 --tries 2
//     snmp_poll --help
//
// In snmp/, packet.h has the packets, node.h sends and waits, walk.h walks, sample_record.h has the record and trouble.h
// what can go wrong, with the exit statuses. Silence is met with further tries; an answer that is not what it should be
// is refused at once, and so is a walk that does not come to an end. Packets from elsewhere and answers to other requests
// are set aside while the wait goes on.
#include "snmp/walk.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>

namespace {

using snmp::Bytes;

constexpr Attribute SystemGroup[] = {{"sysDescr", "1.3.6.1.2.1.1.1.0", DOV0_ASN_OCTETSTRING},
                                     {"sysObjectID", "1.3.6.1.2.1.1.2.0", DOV0_ASN_OBJECTIDENTIFIER},
                                     {"sysUpTime", "1.3.6.1.2.1.1.3.0", snmp::TimeTicks},
                                     {"sysServices", "1.3.6.1.2.1.1.7.0", DOV0_ASN_INTEGER}};

constexpr Attribute InterfaceColumns[] = {{"ifIndex", "1.3.6.1.2.1.2.2.1.1", DOV0_ASN_INTEGER},
                                          {"ifDescr", "1.3.6.1.2.1.2.2.1.2", DOV0_ASN_OCTETSTRING},
                                          {"ifType", "1.3.6.1.2.1.2.2.1.3", DOV0_ASN_INTEGER},
                                          {"ifSpeed", "1.3.6.1.2.1.2.2.1.5", snmp::Gauge32},
                                          {"ifPhysAddress", "1.3.6.1.2.1.2.2.1.6", DOV0_ASN_OCTETSTRING},
                                          {"ifOperStatus", "1.3.6.1.2.1.2.2.1.8", DOV0_ASN_INTEGER},
                                          {"ifInOctets", "1.3.6.1.2.1.2.2.1.10", snmp::Counter32},
                                          {"ifOutOctets", "1.3.6.1.2.1.2.2.1.16", snmp::Counter32}};
constexpr const Attribute &SysServices = SystemGroup[3];

struct Settings : snmp::NodeSettings {
    size_t mostInterfaces = 4096;
    int32_t repeat = 1;
    std::string recordFile;
    std::string productSpec;
    std::string instance;
    std::string trace;
    std::string traceFile;
};

// --- Polling -----------------------------------------------------------------------------------------------------

void getSystemGroup(snmp::Node &node, std::vector<Sample> &samples)
{
    std::vector<Bytes> names;
    for (const Attribute &attribute : SystemGroup) {
        names.push_back(snmp::nameOf(attribute.identifier));
    }
    const std::vector<snmp::Variable> variables = node.ask(snmp::GetRequest, names);
    for (size_t i = 0; i < names.size(); ++i) {
        if (variables[i].name != names[i]) {
            throw snmp::Refusal("it names another variable than " + std::string(SystemGroup[i].name));
        }
        if (variables[i].tag != snmp::NoSuchObject && variables[i].tag != snmp::NoSuchInstance) {
            samples.push_back(sampleOf(SystemGroup[i], variables[i]));
        }
    }
}

// --- Output ------------------------------------------------------------------------------------------------------

void print(const Sample &sample)
{
    std::printf("%s %-13s %s = %s\n", sample.time.c_str(), sample.attribute->name, sample.name.c_str(),
                shownValue(sample).c_str());
}

void printServices(const std::vector<Sample> &samples)
{
    for (const Sample &sample : samples) {
        if (sample.attribute == &SysServices) {
            char *services = DOV0_DetermineNodeServiceType(static_cast<int32_t>(sample.number));
            std::printf("services: %s\n", services != nullptr ? services : "");
            DOV0_FreeStorage(&services);
        }
    }
}

// One line for a poll of many, the samples and that line for one alone.
void poll(snmp::Node &node, const Settings &settings)
{
    std::vector<Sample> samples;
    getSystemGroup(node, samples);
    walk(node, {std::begin(InterfaceColumns), std::end(InterfaceColumns)}, settings.mostInterfaces, samples);

    const Bytes record = recordOf(samples);
    const int32_t checkSum = checkSumOf(record);
    if (!holds(record, checkSum, samples)) {
        throw snmp::Failure(snmp::RecordLost, {settings.host, "the record does not hold them"});
    }
    if (!settings.recordFile.empty()) {
        std::ofstream file(settings.recordFile, std::ios::binary);
        file.write(reinterpret_cast<const char *>(record.data()),
                   static_cast<std::streamsize>(record.size()));
        if (!file.flush()) {
            throw snmp::Failure(snmp::RecordLost,
                                {settings.host, settings.recordFile + " cannot be written"});
        }
    }
    if (settings.repeat == 1) {
        for (const Sample &sample : samples) {
            print(sample);
        }
        printServices(samples);
    }
    std::printf("record: %zu samples, %zu bytes, checksum %04X, read back\n", samples.size(), record.size(),
                static_cast<unsigned int>(checkSum));
}

snmp::Status report(const snmp::Failure &failure)
{
    const std::string message = snmp::messageOf(failure);
    std::fprintf(stderr, "%s\n", message.c_str());
    DOV0_ZTconsoleMessage("SNMP", nullptr, message.c_str());
    return failure.trouble.status;
}

// --- Start -------------------------------------------------------------------------------------------------------

bool start(const Settings &settings)
{
    if (!settings.trace.empty() && TRC1_Configure(settings.trace.c_str(), settings.traceFile.c_str()) != 0) {
        return false; // the facility has said why
    }
    if (!settings.productSpec.empty()) { // the operator of an agent sets these
        const std::filesystem::path file = std::filesystem::absolute(settings.productSpec);
        setenv("DOV_PRODSPEC_PATH", (file.parent_path() / "").c_str(), 1);
        setenv("DOV_PRODSPEC_NAME", file.filename().c_str(), 1);
    }
    if (DOV0_InitializeProductSpec(settings.instance.c_str(), settings.productSpec.empty() ? 1 : 0) == 0) {
        report(snmp::Failure(snmp::NoProductSpec, {settings.productSpec}));
        return false;
    }
    return true;
}

// Takes the port out of HOST:PORT.
void splitHost(Settings &settings)
{
    const size_t colon = settings.host.rfind(':');
    if (colon == std::string::npos) {
        return;
    }
    const std::string port = settings.host.substr(colon + 1);
    const char *const end = port.data() + port.size();
    const auto [rest, error] = std::from_chars(port.data(), end, settings.port);
    if (error != std::errc() || rest != end || settings.port < 1 || settings.port > 65535) {
        throw CLI::ValidationError("HOST", "there is no port " + port);
    }
    settings.host.resize(colon);
}

// The status of the last poll that failed.
snmp::Status run(const Settings &settings)
{
    snmp::Status status = snmp::Polled;
    std::optional<snmp::Node> node;
    for (int32_t i = 0; i < settings.repeat; ++i) {
        try {
            if (!node) {
                node.emplace(settings);
            }
            poll(*node, settings);
        } catch (const snmp::Refusal &refusal) {
            status = report(snmp::Failure(snmp::BadPacket, {settings.host, refusal.what()}));
        } catch (const snmp::Failure &failure) {
            status = report(failure);
        }
    }
    return status;
}

int runProgram(int argc, char **argv)
{
    Settings settings;
    CLI::App app("Polls a node over SNMP: its system group and its interfaces.");
    app.get_formatter()->column_width(32);
    app.option_defaults()->always_capture_default();
    app.add_option("HOST", settings.host, "name or address of the node, which :PORT may follow")->required();
    app.add_option("--port", settings.port, "its port")->check(CLI::Range(1, 65535));
    app.add_option("--community", settings.community, "the community to ask for");
    app.add_option("--timeout", settings.timeout, "milliseconds to wait for an answer")
        ->check(CLI::Range(1, 3600000));
    app.add_option("--tries", settings.tries, "times that a request is sent")->check(CLI::Range(1, 100));
    app.add_option("--max-interfaces", settings.mostInterfaces,
                   "interfaces after which the walk is given up");
    app.add_option("--repeat", settings.repeat, "polls, one after another, of one line each")
        ->check(CLI::PositiveNumber);
    app.add_option("--record", settings.recordFile, "file to write the record to");
    app.add_option("--product-spec", settings.productSpec,
                   "product specification file; none: the agent's defaults");
    app.add_option("--instance", settings.instance, "name of this instance of the agent");
    app.add_option("--trace", settings.trace, "what to trace, as in DOV_TRACE");
    app.add_option("--trace-file", settings.traceFile, "where to; none: standard error");
    try {
        app.parse(argc, argv);
        splitHost(settings);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? snmp::Polled : snmp::WrongUsage;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // lines stay in order beside those of standard error
    return start(settings) ? run(settings) : snmp::NotStarted;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return runProgram(argc, argv);
    } catch (const std::exception &error) { // no memory, say
        std::fprintf(stderr, "snmp_poll: %s\n", error.what());
        return snmp::NotStarted;
    }
}
