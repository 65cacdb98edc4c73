print(arguments.length + ":" + arguments.join("|"));
