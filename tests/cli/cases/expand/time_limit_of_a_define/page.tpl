<%keep DEFINE="while (true);"/%>
