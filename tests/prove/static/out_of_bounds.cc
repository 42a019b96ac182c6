int planted(int i) {
  const int numbers[3] = {1, 2, 3};
  return i > 0 ? numbers[3] : 0;
}
