<%if cond="while (true);"/%>
