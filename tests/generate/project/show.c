#include "config.h"
#include "generated code/colours.h"

#include <stdio.h>

int main(void)
{
    printf("%s %s %d %d\n", PRODUCT, GREETING, SIZE, COLOUR_BLUE);
    return 0;
}
