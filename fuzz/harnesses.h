// The fuzz harnesses (harnesses.cc). Each takes one input from outside the
// device and checks every answer the entry points give for it against the
// message runtime; a failed check ends the program.
#ifndef MGMTMSG_FUZZ_HARNESSES_H
#define MGMTMSG_FUZZ_HARNESSES_H

#include <cstddef>
#include <cstdint>
#include <utility>

namespace harness {

using Harness = void (*)(const uint8_t* data, size_t size);

void capability_request(const uint8_t* data, size_t size);
void get_request(const uint8_t* data, size_t size);
void set_request(const uint8_t* data, size_t size);
void subscribe_request(const uint8_t* data, size_t size);
void south_msg(const uint8_t* data, size_t size);
void subs_args(const uint8_t* data, size_t size);
void cancel_args(const uint8_t* data, size_t size);
void path_text(const uint8_t* data, size_t size);
void wire_writer(const uint8_t* data, size_t size);

// Every harness, by the name of its seed folder fuzz/corpus/fuzz_<name>.
inline constexpr std::pair<const char*, Harness> kHarnesses[] = {
    {"capability_request", capability_request},
    {"get_request", get_request},
    {"set_request", set_request},
    {"subscribe_request", subscribe_request},
    {"south_msg", south_msg},
    {"subs_args", subs_args},
    {"cancel_args", cancel_args},
    {"path_text", path_text},
    {"wire_writer", wire_writer}};

}  // namespace harness

#endif
