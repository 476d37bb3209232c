// A plugin for QEMU's user emulation: counts the guest instructions executed
// and writes the total to the plugin log when the program ends.
//
//   qemu-arm -d plugin -D LOG -plugin ./libinsn_count.so PROGRAM ARGUMENTS
//
// Distributions ship the emulator without qemu-plugin.h, so what is used of the
// plugin interface (version 1) is declared here.
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#define EXPORT __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*translated)(qemu_plugin_id_t,
                                                              struct qemu_plugin_tb *));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *block, enum qemu_plugin_op op,
                                              void *counter, uint64_t operand);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*ended)(qemu_plugin_id_t, void *),
                                    void *data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);
void qemu_plugin_outs(const char *text);

EXPORT int qemu_plugin_version = 1;

static uint64_t executed;

// A translated block runs from its first to its last instruction, so one
// addition for each execution of the block counts them all.
static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb *block) {
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &executed,
                                           qemu_plugin_tb_n_insns(block));
}

static void report(qemu_plugin_id_t id, void *data) {
  (void)id;
  (void)data;
  char line[32];
  snprintf(line, sizeof line, "%" PRIu64 "\n", executed);
  qemu_plugin_outs(line);
}

EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t *info, int argc,
                               char **argv) {
  (void)info;
  (void)argc;
  (void)argv;
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
  qemu_plugin_register_atexit_cb(id, report, NULL);
  return 0;
}
