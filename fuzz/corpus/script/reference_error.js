x = 1;
  undefinedName.y;
