// A program that has to end at its overflow: of one built with traps the last line is never seen.

#include <limits.h>
#include <stdio.h>
#include <windows.h>

static LONG WINAPI say(EXCEPTION_POINTERS* exception)
{
    printf("exception %08lx\n", exception->ExceptionRecord->ExceptionCode);
    fflush(stdout);
    ExitProcess(1);
    return EXCEPTION_EXECUTE_HANDLER;
}

int main(int argc, char** argv)
{
    (void)argv;
    SetUnhandledExceptionFilter(say);
    printf("%d\n", INT_MAX - 1 + 2 * argc);
    puts("not trapped");
    return 0;
}
