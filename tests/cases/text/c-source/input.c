#include <stdio.h>
#define LIMIT 10

#ifdef DEBUG
static int verbose = 1;
#else
static int verbose = 0;
#endif

struct point {
  int x, y;
};

int main(int argc, char **argv) {
  int i;
  for (i = 0; i < LIMIT; i++) {
    printf("%d\n", i);
  }
  if (argc > 1)
    return 1;
  return 0;
}
