// Executes the program in its arguments with a parent-death signal: when the application crashes, the screen recording
// stops.

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

int main(int count, char** words) {
  if (count < 2) return 2;
  const pid_t parent = getppid();
  prctl(PR_SET_PDEATHSIG, SIGINT);
  // The parent may have exited before prctl().
  if (getppid() != parent || parent == 1) return 1;
  execvp(words[1], words + 1);
  return 127;
}
