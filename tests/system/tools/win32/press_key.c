/* Presses a key at the console of another program, for all programs there:

       press_key PROCESS KEY

   KEY is 0 for Ctrl-C or 1 for Ctrl-Break. */
#include <stdlib.h>

#include <windows.h>

static BOOL WINAPI stay(DWORD event)
{
    (void)event;
    return TRUE;
}

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    FreeConsole(); /* else no other can be joined */
    if (AttachConsole(strtoul(argv[1], NULL, 10)) == 0 || SetConsoleCtrlHandler(stay, TRUE) == 0)
        return 3;
    return GenerateConsoleCtrlEvent(strtoul(argv[2], NULL, 10), 0) != 0 ? 0 : 4;
}
