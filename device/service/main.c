/* mgmtmsg-service: the reference service module. Connects to the front end's
 * south socket and answers the gNMI and dial-in calls it relays from a data
 * tree, in one thread around poll(). */
#include <gnmi/gnmi_ex.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "channel.h"

#define RECONNECT_NS 200000000u

static const char kUsage[] =
    "usage: mgmtmsg-service [OPTION...]\n"
    "Answers the gNMI and dial-in calls that mgmtmsg-frontend relays over its\n"
    "south socket, from a sample data tree whose counters move every tick.\n"
    "  --south PATH      the front end's socket (/tmp/mgmtmsg-south.sock)\n"
    "  --users FILE      accepted users, a user:password line each\n"
    "  --user U:P        an accepted user (admin:admin when none is given)\n"
    "  --tick-ms N       counter period in milliseconds (1000)\n"
    "  --interfaces N    interfaces in the sample tree (2)\n"
    "Dial-out: samples pushed to collectors through the front end's client calls\n"
    "  --dial-out HOST:PORT[,HOST:PORT...]  the collectors (none)\n"
    "  --dial-out-service NAME   dataPublish (quorix_dialout.gRPCDataservice)\n"
    "                            or Dialout (dialout.Dialout); dataPublish\n"
    "  --dial-out-interval-ms N  sample period (1000); 0: as fast as taken\n"
    "  --dial-out-paths P[,P...] the paths sampled\n"
    "                            (/interfaces/interface/state/counters)\n"
    "  --dial-out-tls 0|1        the collectors serve TLS (0)\n"
    "  --help            this text\n";

static volatile sig_atomic_t g_stop;

static void on_signal(int sig) {
  (void)sig;
  g_stop = 1;
}

struct options {
  const char* south;
  long tick_ms;
  long interfaces;
  struct dialout_options dialout;
};

/* Reads the options into opts and the users; 0 with a message on a bad one. */
static int read_options(int argc, char** argv, struct options* opts, struct users* users) {
  int i;
  for (i = 1; i < argc; i += 2) {
    const char* value = i + 1 < argc ? argv[i + 1] : NULL;
    int ok = value != NULL;
    if (strcmp(argv[i], "--help") == 0) {
      fputs(kUsage, stdout);
      exit(0);
    } else if (strcmp(argv[i], "--south") == 0) {
      opts->south = value;
    } else if (strcmp(argv[i], "--users") == 0) {
      ok = ok && users_load(users, value);
    } else if (strcmp(argv[i], "--user") == 0) {
      ok = ok && users_add(users, value);
    } else if (strcmp(argv[i], "--tick-ms") == 0) {
      ok = ok && (opts->tick_ms = strtol(value, NULL, 10)) > 0;
    } else if (strcmp(argv[i], "--dial-out") == 0) {
      opts->dialout.destinations = value;
    } else if (strcmp(argv[i], "--dial-out-service") == 0) {
      opts->dialout.service = value;
    } else if (strcmp(argv[i], "--dial-out-interval-ms") == 0) {
      ok = ok && (opts->dialout.interval_ms = strtol(value, NULL, 10)) >= 0;
    } else if (strcmp(argv[i], "--dial-out-paths") == 0) {
      opts->dialout.paths = value;
    } else if (strcmp(argv[i], "--dial-out-tls") == 0) {
      ok = ok && (opts->dialout.tls = (int)strtol(value, NULL, 10)) >= 0 && opts->dialout.tls <= 1;
    } else if (strcmp(argv[i], "--interfaces") == 0) {
      ok = ok && (opts->interfaces = strtol(value, NULL, 10)) >= 0 && opts->interfaces <= 100000;
    } else {
      ok = 0;
    }
    if (!ok) {
      fprintf(stderr, "mgmtmsg-service: bad option %s\n%s", argv[i], kUsage);
      return 0;
    }
  }
  return users->count > 0 || users_add(users, "admin:admin");
}

static void serve(struct service* svc, const char* south) {
  uint64_t next_connect = 0;
  while (!g_stop) {
    uint64_t now = monotonic_ns(), next, due;
    struct pollfd pfd = {-1, POLLIN, 0};
    if (svc->fd < 0 && now >= next_connect && !channel_connect(svc, south)) {
      next_connect = now + RECONNECT_NS;
    }
    if (now >= svc->next_tick) {
      tree_tick(&svc->tree);
      svc->next_tick = now + svc->tick_ns;
      calls_changed(svc);
    }
    next = calls_run(svc, now);
    due = dialout_run(svc, now);
    if (due < next) next = due;
    if (svc->next_tick < next) next = svc->next_tick;
    if (svc->fd < 0 && next_connect < next) next = next_connect;
    if (svc->fd >= 0 && svc->out.len > 0 && !channel_flush(svc)) channel_close(svc);
    pfd.fd = svc->fd;
    pfd.events = (short)(POLLIN | (svc->out.len > 0 ? POLLOUT : 0));
    now = monotonic_ns();
    if (poll(&pfd, 1, next > now ? (int)((next - now) / 1000000u + 1) : 0) <= 0) continue;
    if ((pfd.revents & (POLLIN | POLLHUP | POLLERR)) && !channel_read(svc)) {
      channel_close(svc);
      next_connect = monotonic_ns() + RECONNECT_NS;
    } else if (svc->out.len > 0 && !channel_flush(svc)) {
      channel_close(svc);
    }
  }
}

int main(int argc, char** argv) {
  struct options opts = {"/tmp/mgmtmsg-south.sock", 1000, 2, {NULL, "dataPublish", 1000, NULL, 0}};
  struct service svc;
  struct sigaction action;
  int ok;
  memset(&svc, 0, sizeof svc);
  svc.fd = -1;
  memset(&action, 0, sizeof action);
  action.sa_handler = on_signal;
  sigaction(SIGINT, &action, NULL);
  sigaction(SIGTERM, &action, NULL);
  ok = read_options(argc, argv, &opts, &svc.users) && tree_init(&svc.tree, (int)opts.interfaces) &&
       (svc.scratch = GNMI_Subscribe_Init()) != NULL && dialout_init(&svc.dialout, &opts.dialout);
  if (ok) {
    svc.tick_ns = (uint64_t)opts.tick_ms * 1000000u;
    svc.next_tick = monotonic_ns() + svc.tick_ns;
    serve(&svc, opts.south);
    if (svc.fd >= 0) {
      dialout_close(&svc);
      channel_flush(&svc);
      channel_close(&svc);
    }
  }
  free(svc.calls);
  buffer_free(&svc.in);
  buffer_free(&svc.out);
  GNMI_Subscribe_DeInit(svc.scratch);
  dialout_free(&svc.dialout);
  tree_free(&svc.tree);
  users_free(&svc.users);
  return ok ? 0 : 2;
}
