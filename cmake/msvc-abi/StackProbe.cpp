// Called by functions whose frame is larger than a page, with the size in rax: touches the pages below the stack
// pointer from the top down, so that the guard page moves along and the stack grows. All registers but r10 and r11 are
// kept, and the caller moves the stack pointer itself.
extern "C" __attribute__((naked)) void __chkstk()
{
    __asm__ volatile(
        // r10: lowest address of the frame; 0 if it would lie below address 0. r11: where the last touch was.
        "leaq 8(%rsp), %r11\n\t"
        "movq %r11, %r10\n\t"
        "subq %rax, %r10\n\t"
        "jae 1f\n\t"
        "xorl %r10d, %r10d\n"
        "1:\n\t"
        "andq $-4096, %r10\n\t"
        "andq $-4096, %r11\n"
        "2:\n\t"
        "cmpq %r10, %r11\n\t"
        "jbe 3f\n\t"
        "subq $4096, %r11\n\t"
        "testb $0, (%r11)\n\t"
        "jmp 2b\n"
        "3:\n\t"
        "ret");
}
