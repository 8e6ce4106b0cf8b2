/* SPDX-License-Identifier: MIT */
// Preloaded into the program: lets one of its calls to the system fail, or ends the program there.
// FAIL_CALL is "kind:number". Kinds: open, close, write, fsync, rename, malloc fail; a number for a
// kind is that of the signal that the program gets in the middle of a write. Calls are counted from
// when the program sets up its signals, which is when its own work begins. The file "reached" is
// made when the call comes.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

static char s_sKind[16];
static long s_lLeft;
static int s_bOn;

__attribute__((constructor)) static void Begin(void) {
    const char* s = getenv("FAIL_CALL");
    if (s != NULL) sscanf(s, "%15[^:]:%ld", s_sKind, &s_lLeft);
}

static int IsNow(const char* sKind) {
    if (!s_bOn || s_lLeft <= 0 || strcmp(sKind, s_sKind) != 0 || --s_lLeft != 0) return 0;
    syscall(SYS_close, syscall(SYS_open, "reached", O_CREAT | O_WRONLY, 0600));
    return 1;
}

static int Fail(int iError) {
    errno = iError;
    return -1;
}

#define REAL(name)                    \
    static __typeof__(&name) s_pReal; \
    if (s_pReal == NULL) *(void**)&s_pReal = dlsym(RTLD_NEXT, #name)

__typeof__(void (*)(int)) signal(int iSignal, void (*pHandler)(int)) {
    REAL(signal);
    s_bOn = 1;
    return s_pReal(iSignal, pHandler);
}

int open(const char* sPath, int iFlags, ...) {
    REAL(open);
    va_list oList;
    va_start(oList, iFlags);
    const int iMode = va_arg(oList, int);
    va_end(oList);
    return IsNow("open") ? Fail(EMFILE) : s_pReal(sPath, iFlags, iMode);
}

int close(int iFile) {
    REAL(close);
    const int iResult = s_pReal(iFile);
    return IsNow("close") ? Fail(EIO) : iResult;
}

int fclose(FILE* pFile) {
    REAL(fclose);
    const int iResult = s_pReal(pFile);
    return IsNow("close") ? Fail(EIO) : iResult;
}

size_t fwrite(const void* p, size_t uSize, size_t uCount, FILE* pFile) {
    REAL(fwrite);
    // Messages on standard error are told all the same.
    if (pFile == stderr) return s_pReal(p, uSize, uCount, pFile);
    if (IsNow("write")) {
        s_pReal(p, uSize, uCount / 2, pFile);
        errno = ENOSPC;
        return uCount / 2;
    }
    const int iSignal = atoi(s_sKind);
    if (iSignal != 0 && IsNow(s_sKind)) {
        s_pReal(p, uSize, uCount / 2, pFile);
        fflush(pFile);
        kill(getpid(), iSignal);
    }
    return s_pReal(p, uSize, uCount, pFile);
}

int fsync(int iFile) {
    REAL(fsync);
    return IsNow("fsync") ? Fail(EIO) : s_pReal(iFile);
}

int rename(const char* sFrom, const char* sTo) {
    REAL(rename);
    return IsNow("rename") ? Fail(EPERM) : s_pReal(sFrom, sTo);
}

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);

static void* NoMemory(void) {
    errno = ENOMEM;
    return NULL;
}

void* malloc(size_t uSize) {
    return IsNow("malloc") ? NoMemory() : __libc_malloc(uSize);
}

void* calloc(size_t uCount, size_t uSize) {
    return IsNow("malloc") ? NoMemory() : __libc_calloc(uCount, uSize);
}

void* realloc(void* p, size_t uSize) {
    return IsNow("malloc") ? NoMemory() : __libc_realloc(p, uSize);
}
