print("dash");
