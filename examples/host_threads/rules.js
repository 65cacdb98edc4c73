function check(text) {
    if (text.includes("TODO"))
        throw new Error("not finished");
    while (text.includes("for ever"))
        ;
}
