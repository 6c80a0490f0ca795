// The program's commands are still to come.
int main()
{
  return 2;
}
