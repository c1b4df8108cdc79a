/* The start of a program without a C library's own: fetches the arguments and calls main. */

int __getmainargs(int* argc, char*** argv, char*** environment, int wildcards, int* new_mode);
void exit(int status);
int main(int argc, char** argv);

/* Says that the program uses floating point. */
int _fltused = 0;

void mainCRTStartup(void)
{
    int argc = 0;
    char** argv = 0;
    char** environment = 0;
    int new_mode = 0;
    __getmainargs(&argc, &argv, &environment, 0, &new_mode);
    exit(main(argc, argv));
}
