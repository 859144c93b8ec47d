// Becomes the program that its arguments name, and has it told to end when the process that started it is gone:
// nobody's screen is recorded by a client that has crashed.

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

int main(int count, char** words) {
  if (count < 2) return 2;
  const pid_t parent = getppid();
  prctl(PR_SET_PDEATHSIG, SIGINT);
  // It may have gone before that.
  if (getppid() != parent || parent == 1) return 1;
  execvp(words[1], words + 1);
  return 127;
}
