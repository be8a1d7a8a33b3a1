/* Counts checks and says which failed; for hosts in C. */
#ifndef QXBC_TESTS_FLAT_CHECKS_H
#define QXBC_TESTS_FLAT_CHECKS_H

#include <stdio.h>
#include <string.h>

static unsigned int checksMade = 0;
static unsigned int checksFailed = 0;

static void Equal(const char* what, double value, double expected)
{
    ++checksMade;
    if (value != expected) {
        ++checksFailed;
        printf("FAILED  %s\n        expected: %.10g\n        but was:  %.10g\n", what, expected, value);
    }
}

static void SameText(const char* what, const char* text, const char* expected)
{
    ++checksMade;
    if (text == NULL || expected == NULL ? text != expected : strcmp(text, expected) != 0) {
        ++checksFailed;
        printf("FAILED  %s\n        expected: %s\n        but was:  %s\n", what, expected ? expected : "(null)",
               text ? text : "(null)");
    }
}

static int Verdict(void)
{
    printf("%u checks, %u failed\n", checksMade, checksFailed);
    return checksFailed == 0 ? 0 : 1;
}

#endif
