#include <systemd/sd-bus.h>

#include <stdexcept>

#include "bench/latency.h"

namespace bench {
namespace {

constexpr const char* NAME = "org.example.Settings";
constexpr const char* PATH = "/settings";

void check(int result) {
  if (result < 0) throw std::runtime_error("the message bus failed: " + std::to_string(-result));
}

sd_bus* openBus(const std::string& path) {
  sd_bus* bus = nullptr;
  check(sd_bus_new(&bus));
  check(sd_bus_set_address(bus, ("unix:path=" + path).c_str()));
  check(sd_bus_set_bus_client(bus, 1));
  check(sd_bus_start(bus));
  return bus;
}

int readGroup(sd_bus_message* call, void* record, sd_bus_error* /*error*/) {
  const char* group = nullptr;
  check(sd_bus_message_read(call, "s", &group));
  sd_bus_message* reply = nullptr;
  check(sd_bus_message_new_method_return(call, &reply));
  const auto& bytes = *static_cast<const std::string*>(record);
  check(sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size()));
  const int sent = sd_bus_send(nullptr, reply, nullptr);
  (void)sd_bus_message_unref(reply);
  return sent;
}

void serve(const std::string& path, std::string record) {
  const sd_bus_vtable methods[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("Read", "s", "ay", readGroup, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END,
  };
  sd_bus* const bus = openBus(path);
  check(sd_bus_add_object_vtable(bus, nullptr, PATH, NAME, methods, &record));
  check(sd_bus_request_name(bus, NAME, 0));
  for (;;) {
    const int processed = sd_bus_process(bus, nullptr);
    check(processed);
    if (processed == 0) check(sd_bus_wait(bus, UINT64_MAX));
  }
}

void call(sd_bus* bus, size_t replySize) {
  sd_bus_message* reply = nullptr;
  sd_bus_error error = SD_BUS_ERROR_NULL;
  check(sd_bus_call_method(bus, NAME, PATH, NAME, "Read", &error, &reply, "s", "IKE"));
  const void* bytes = nullptr;
  size_t size = 0;
  check(sd_bus_message_read_array(reply, 'y', &bytes, &size));
  (void)sd_bus_message_unref(reply);
  if (size != replySize) throw std::runtime_error("the message bus brought another reply");
}

}  // namespace

Service busService(const std::string& path, size_t replySize) {
  std::shared_ptr<Process> daemon = startCommand(
      {"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=unix:path=" + path});
  (void)connectTo(path);
  std::shared_ptr<Process> server =
      startFunction([&] { serve(path, std::string(replySize, '\0')); });
  return {"D-Bus", [path, replySize, daemon, server]() -> RoundTrip {
            sd_bus* const bus = openBus(path);
            return [bus, replySize] { call(bus, replySize); };
          }};
}

}  // namespace bench
