void G()
{
     Execute C:\a.exe
  }
