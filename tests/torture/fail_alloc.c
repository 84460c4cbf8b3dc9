// Preloaded into a program: fails its TORTURE_ALLOCATION-th allocation; how many there were goes to the file
// TORTURE_COUNT. Programs that it runs are left alone.
#define _GNU_SOURCE
#include <errno.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);

static long calls;
static long failing = -1;

static int fails(void) {
  if (environ == NULL) return 0;  // the loader is at work
  if (failing < 0) failing = getenv("TORTURE_ALLOCATION") == NULL ? 0 : atol(getenv("TORTURE_ALLOCATION"));
  if (++calls != failing) return 0;
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }
void* realloc(void* memory, size_t size) { return fails() ? NULL : __libc_realloc(memory, size); }

__attribute__((constructor)) static void leave_others_alone(void) { unsetenv("LD_PRELOAD"); }

__attribute__((destructor)) static void tell(void) {
  const long all = calls;
  FILE* const file = getenv("TORTURE_COUNT") == NULL ? NULL : fopen(getenv("TORTURE_COUNT"), "w");
  if (file == NULL) return;
  fprintf(file, "%ld", all);
  fclose(file);
}
