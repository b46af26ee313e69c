extern "C" {
int sampleFunction();
extern int sampleDatum;

int sampleFunction() {
  return 42;
}
int sampleDatum = 7;
}
