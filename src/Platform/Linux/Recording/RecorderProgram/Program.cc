// Executes the program that its arguments name, with a signal set for the end of the process that started it: when the
// client crashes, the recording of the screen stops.

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

int main(int count, char** words) {
  if (count < 2) return 2;
  const pid_t parent = getppid();
  prctl(PR_SET_PDEATHSIG, SIGINT);
  // The parent may have ended before that.
  if (getppid() != parent || parent == 1) return 1;
  execvp(words[1], words + 1);
  return 127;
}
